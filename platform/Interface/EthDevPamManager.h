#pragma once

#include <functional>
#include <map>
#include <string>

#include "Interface/DeviceIntfStatusDir.h"
#include "Interface/EthDevPamCollection.h"
#include "Interface/EthDevPamParams.h"
#include "Interface/PamDesiredIntfDir.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/Reactor.h"
#include "Wirx/NamespaceName.h"
#include "Wirx/Pam.h"

namespace Interface {

// Opens raw Ethernet packet-access modules for the interfaces that want
// one. While enabled, every interface that is desired and has a kernel
// device in the device directory has a module in the PAM collection;
// modules of interfaces that stop qualifying are closed, and one whose
// device changes is opened anew on the new device. The collection holds
// only what this manager opened: it empties when the manager is disabled or
// destroyed.
//
// The socket settings (protocol, namespace, broadcast, frame size, one
// module per interface or one shared) are fixed when a module is opened;
// changing one while enabled reopens every module. Set them before enabling.
//
// Modules come from an opener: in-memory ones (Wirx::MemPam, named after the
// device) by default; a host, or a test network that links devices, installs
// its own. An opener may fail by returning null: the interface then has no
// module until something about it changes.
class LSPPING_EXPORT EthDevPamManager : public Orv::Entity,
                                        public Orv::Reactor {
public:
  using PamOpener = std::function<Orv::Ptr<Wirx::Pam>(const EthDevPamParams &)>;

  static constexpr Orv::Attr<Orv::U16> ethProtocolAttr{1};
  static constexpr Orv::Attr<Wirx::NamespaceName> netNsAttr{2};
  static constexpr Orv::Attr<bool> broadcastAttr{3};
  static constexpr Orv::Attr<Orv::U32> maxRxPktDataAttr{4};
  static constexpr Orv::Attr<bool> perIntfSocketAttr{5};
  static constexpr Orv::Attr<bool> enabledAttr{6};

  // A standard Ethernet frame: 1500 bytes of payload, header and FCS.
  static constexpr Orv::U32 defaultMaxRxPktData = 1518;

  EthDevPamManager(Orv::Ptr<const PamDesiredIntfDir> desiredIntfDir,
                   Orv::Ptr<EthDevPamCollection> pamCollection,
                   Orv::Ptr<const DeviceIntfStatusDir> deviceIntfStatusDir);
  ~EthDevPamManager() override;

  const Orv::Ptr<const PamDesiredIntfDir> &desiredIntfDir() const {
    return desiredIntfDir_;
  }
  const Orv::Ptr<EthDevPamCollection> &pamCollection() const {
    return pamCollection_;
  }
  const Orv::Ptr<const DeviceIntfStatusDir> &deviceIntfStatusDir() const {
    return deviceIntfStatusDir_;
  }

  Orv::U16 ethProtocol() const { return ethProtocol_; }
  void ethProtocolIs(Orv::U16 ethProtocol);
  const Wirx::NamespaceName &netNs() const { return netNs_; }
  void netNsIs(const Wirx::NamespaceName &netNs);
  bool broadcast() const { return broadcast_; }
  void broadcastIs(bool broadcast);
  Orv::U32 maxRxPktData() const { return maxRxPktData_; }
  void maxRxPktDataIs(Orv::U32 maxRxPktData);
  // One module per interface, or one for all interfaces of the namespace.
  bool perIntfSocket() const { return perIntfSocket_; }
  void perIntfSocketIs(bool perIntfSocket);
  bool enabled() const { return enabled_; }
  void enabledIs(bool enabled);

  // Installs the opener and reopens every module with it.
  void pamOpenerIs(PamOpener opener);

  // Opens or closes the interface's module as it now qualifies.
  void handleIntf(const Wirx::IntfId &intf);

private:
  // Runs handleIntf for every interface desired or holding a module.
  void handleAllIntfs();
  // Replaces every module with one opened with the current settings and
  // opener, in place: readers see each interface's module change, not go.
  void reopenAll();
  Orv::Ptr<Wirx::Pam> open(const Wirx::IntfId &intf,
                           const std::string &deviceName);
  void close(const Wirx::IntfId &intf);

  const Orv::Ptr<const PamDesiredIntfDir> desiredIntfDir_;
  const Orv::Ptr<EthDevPamCollection> pamCollection_;
  const Orv::Ptr<const DeviceIntfStatusDir> deviceIntfStatusDir_;
  Orv::U16 ethProtocol_ = 0;
  Wirx::NamespaceName netNs_ = Wirx::NamespaceName::defaultNamespace();
  bool broadcast_ = false;
  Orv::U32 maxRxPktData_ = defaultMaxRxPktData;
  bool perIntfSocket_ = false;
  bool enabled_ = false;
  PamOpener pamOpener_;
  // The device each open module is on.
  std::map<Wirx::IntfId, std::string> openDevice_;
  // The module all interfaces share when not one per interface.
  Orv::Ptr<Wirx::Pam> sharedPam_;
};

} // namespace Interface
