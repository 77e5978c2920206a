#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Interface/AllIntfStatusDir.h"
#include "Interface/LinuxIntf.h"
#include "Ip/VrfIpIntfStatus.h"
#include "Ip6/VrfIp6IntfStatus.h"
#include "KernelNetInfo/Status.h"
#include "Kiv/EventLoop.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Wirx/IntfId.h"
#include "Wirx/NamespaceName.h"

struct mnl_socket;
struct nlmsghdr;

namespace Interface {

// Follows the kernel's interfaces over rtnetlink and keeps the platform's
// interface state in line with them, each interface named by its kernel
// name: its MTU in the interface status directory, its device in the
// kernel information (in the namespace the host names), its IPv4 and IPv6
// addresses in the default VRF's status, and its index, MAC address and
// up/down state in this entity's own table. Everything is read at start;
// then the kernel's notifications bring each change (an interface added,
// renamed or removed, an MTU, a link going up or down, an address added or
// removed) into that state as the loop sees it. Should the kernel drop
// notifications (the socket's buffer overran), everything is read anew.
//
// Only what it published itself is ever changed or removed. A failure
// never throws: open() returns null with a one-line message, and later
// failures are described in error().
class LinuxIntfSync : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<Wirx::IntfId> linuxIntfAttr{1};
  static constexpr Orv::Attr<std::string> errorAttr{2};

  // The state this keeps filled.
  struct Platform {
    Orv::Ptr<AllIntfStatusDir> allIntfStatusDir;
    Orv::Ptr<KernelNetInfo::Status> kniStatus;
    Orv::Ptr<Ip::VrfIpIntfStatus> vrfIpIntfStatus;
    Orv::Ptr<Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus;
    // The name the kernel information gives this process's namespace.
    Wirx::NamespaceName netNs = Wirx::NamespaceName::defaultNamespace();
  };

  // Reads the kernel's interfaces into `platform` and goes on following
  // them on `loop`, which must outlive this. Null, with `error` set, when
  // the kernel cannot be asked.
  static Orv::Ptr<LinuxIntfSync> open(Kiv::EventLoop &loop, Platform platform,
                                      std::string &error);

  LinuxIntfSync(Kiv::EventLoop &loop, Platform platform, mnl_socket *socket);
  ~LinuxIntfSync() override;

  const Orv::Coll<Wirx::IntfId, LinuxIntf> &linuxIntf() const {
    return linuxIntf_;
  }
  // The interface's entry, or null.
  const LinuxIntf *linuxIntf(const Wirx::IntfId &intf) const {
    return linuxIntf_.find(intf);
  }
  // The last failure, "rtnetlink: WHAT: REASON"; empty until one happens.
  const std::string &error() const { return error_; }

private:
  // One kernel interface as the kernel last described it.
  struct Link {
    // False while only addresses of the index are known.
    bool described = false;
    std::string name;
    LinuxIntf intf;
    std::map<Wirx::IpAddr, Orv::U8> ipv4;
    std::map<Wirx::Ip6Addr, Orv::U8> ipv6;
  };

  static int handleMessage(const nlmsghdr *msg, void *self);
  void handleLink(const nlmsghdr *msg);
  void handleAddr(const nlmsghdr *msg);
  void handleReadable();
  // Reads every interface and address anew; false, with error(), when
  // the kernel could not be asked.
  bool resync();
  bool dump(Orv::U16 type);
  // Brings the platform's state for the index in line with `kernel_`.
  void sync(int index);
  void publish(const Link &now, const Link *before);
  void unpublish(const Link &before);
  void errorIs(const std::string &what, int errnum);

  Kiv::EventLoop &loop_;
  const Platform platform_;
  mnl_socket *const socket_;
  Orv::U32 portId_;
  Orv::U32 seq_ = 0;
  std::vector<char> buffer_;
  std::map<int, Link> kernel_;
  // What was published for each index, to tell what to take back.
  std::map<int, Link> published_;
  std::set<int> touched_;
  std::string error_;
  Orv::Coll<Wirx::IntfId, LinuxIntf> linuxIntf_{*this, linuxIntfAttr};
};

} // namespace Interface
