#pragma once

#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/NamedEntity.h"
#include "Wirx/Pkt.h"

namespace Wirx {

// A packet-access module: the agent's door to one source and sink of frames
// (a raw Ethernet device, a UDP socket, or an in-process pipe). Sending is
// `txPktIs`; arrival is signalled by `readableCount` going up, after which
// readers take frames with `rxPkt()` until it returns null. `writableCount`
// goes up when the module is ready to send.
class LSPPING_EXPORT Pam : public Orv::NamedEntity {
public:
  static constexpr Orv::Attr<Orv::U32> readableCountAttr{1};
  static constexpr Orv::Attr<Orv::U32> writableCountAttr{2};

  explicit Pam(const Orv::Name &name) : NamedEntity(name) {}

  // Sends one frame; the module keeps a reference only while it needs one.
  virtual void txPktIs(const Orv::Ptr<Pkt> &pkt) = 0;
  // The next received frame, or null when there is none.
  Orv::Ptr<Pkt> rxPkt();

  Orv::U32 readableCount() const { return readableCount_; }
  Orv::U32 writableCount() const { return writableCount_; }
  Orv::U32 txDrops() const { return txDrops_; }
  Orv::U32 txErrors() const { return txErrors_; }
  int txErrno() const { return txErrno_; }
  Orv::U32 rxErrors() const { return rxErrors_; }

protected:
  // Moves the next received frame, if any, into `rxPktHolder`.
  virtual void doGetRxPkt() = 0;

  void rxPktHolderIs(Orv::Ptr<Pkt> pkt) { rxPktHolder_ = std::move(pkt); }
  // Each raises its count by n and tells the watchers.
  void readableCountInc(Orv::U32 n);
  void writableCountInc(Orv::U32 n);
  void txDropsInc() { ++txDrops_; }
  void txErrorIs(int error) {
    ++txErrors_;
    txErrno_ = error;
  }
  void rxErrorsInc() { ++rxErrors_; }

private:
  Orv::Ptr<Pkt> rxPktHolder_;
  Orv::U32 readableCount_ = 0;
  Orv::U32 writableCount_ = 0;
  Orv::U32 txDrops_ = 0;
  Orv::U32 txErrors_ = 0;
  int txErrno_ = 0;
  Orv::U32 rxErrors_ = 0;
};

} // namespace Wirx
