#include "tools/LinuxSessionHost.h"

#include "Wirx/LinuxRawPam.h"

namespace LspPingTool {

namespace {

// The client's raw modules only send: replies come back on the UDP module.
// Their filter passes UDP to or from this port, and no datagram uses port
// 0, so none is copied into their rings; the MPLS frames it still passes
// are read and dropped.
constexpr Orv::U16 noUdpPort = 0;

} // namespace

LinuxSessionHost::LinuxSessionHost(Kiv::EventLoop &loop,
                                   const PathSource &paths, Log log)
    : loop_(loop), paths_(paths), log_(std::move(log)),
      allIntfStatusDir_(Orv::make<Interface::AllIntfStatusDir>("all")),
      allIntfStatusLocalDir_(
          Orv::make<Interface::AllIntfStatusLocalDir>("local")),
      kniStatus_(Orv::make<KernelNetInfo::Status>("kni")),
      vrfIpIntfStatus_(
          Orv::make<Ip::VrfIpIntfStatus>("vrfIp", L3::VrfName("default"))),
      vrfIp6IntfStatus_(
          Orv::make<Ip6::VrfIp6IntfStatus>("vrfIp6", L3::VrfName("default"))) {}

// The client side goes first, its modules with it, then what it was
// started on; all before the loop they are registered with.
LinuxSessionHost::~LinuxSessionHost() {
  clientRoot_ = nullptr;
  if (utilRoot_) {
    utilRoot_->lspPingClientRootDel();
  }
  replyTap_ = nullptr;
  udpPam_ = nullptr;
  sync_ = nullptr;
}

bool LinuxSessionHost::open(std::string &error) {
  sync_ = Interface::LinuxIntfSync::open(
      loop_,
      {allIntfStatusDir_, kniStatus_, vrfIpIntfStatus_, vrfIp6IntfStatus_,
       Wirx::NamespaceName::defaultNamespace()},
      error);
  if (!sync_) {
    return false;
  }
  watch(*sync_, Interface::LinuxIntfSync::errorAttr,
        [this] { log_(sync_->error()); });
  return true;
}

bool LinuxSessionHost::start(const std::set<Wirx::IntfId> &txIntfs, bool ipv4,
                             bool ipv6, std::string &error) {
  txIntfs_ = txIntfs;
  udpPam_ = DualStackUdpPam::open(loop_, ipv4, ipv6, error);
  if (!udpPam_) {
    return false;
  }
  replyTap_ = Orv::make<Session::ReplyTap>(udpPam_);
  utilRoot_ = LspPing::lspPingUtilRootFactory(Orv::Name("lspping"));
  // The opener goes in once the client root has opened its modules with
  // the default one (in memory): installing it opens them anew.
  clientRoot_ = utilRoot_->lspPingClientRootIs(
      allIntfStatusDir_, allIntfStatusLocalDir_, kniStatus_, vrfIpIntfStatus_,
      vrfIp6IntfStatus_, replyTap_, Orv::Ptr<Kiv::TimerWheel>(&loop_.wheel()));
  return openRaws(txIntfs_, error);
}

bool LinuxSessionHost::txIntfsAdd(const std::set<Wirx::IntfId> &intfs,
                                  std::string &error) {
  std::set<Wirx::IntfId> added;
  for (const Wirx::IntfId &intf : intfs) {
    if (txIntfs_.insert(intf).second) {
      added.insert(intf);
    }
  }
  if (added.empty() || openRaws(added, error)) {
    return true;
  }
  for (const Wirx::IntfId &intf : added) {
    txIntfs_.erase(intf);
  }
  return false;
}

// Installing the opener has the PAM manager open every module anew, with
// the interfaces now wanted.
bool LinuxSessionHost::openRaws(const std::set<Wirx::IntfId> &intfs,
                                std::string &error) {
  clientRoot_->lspPingEthDevPamManager()->ethDevPamManager()->pamOpenerIs(
      [this](const Interface::EthDevPamParams &params) {
        return openRaw(params);
      });
  for (const Wirx::IntfId &intf : intfs) {
    if (!clientRoot_->ethDevPamCollection()->intfPam(intf)) {
      const auto why = rawErrors_.find(intf);
      error = why != rawErrors_.end()
                  ? why->second
                  : intf.name() + ": no raw socket: the interface has no IP "
                                  "address, or no device";
      return false;
    }
  }
  return true;
}

Orv::Ptr<Wirx::Pam>
LinuxSessionHost::openRaw(const Interface::EthDevPamParams &params) {
  if (!params.intfId || !txIntfs_.contains(params.intfId)) {
    return nullptr;
  }
  std::string error;
  const Orv::Ptr<Wirx::LinuxRawPam> pam =
      Wirx::LinuxRawPam::open(loop_, params.deviceName, noUdpPort, error);
  if (!pam) {
    rawErrors_[params.intfId] = error;
    log_(error);
    return nullptr;
  }
  rawErrors_.erase(params.intfId);
  watch(*pam, Wirx::Pam::readableCountAttr, [p = pam.get()] {
    while (p->rxPkt()) {
    }
  });
  watch(*pam, Wirx::LinuxRawPam::errorAttr,
        [this, p = pam.get()] { log_(p->error()); });
  return pam;
}

Session::IngressPath
LinuxSessionHost::ingressPath(const Session::Target &target) const {
  Session::IngressPath path = paths_.ingressPath(target);
  if (!path.error.empty()) {
    return path;
  }
  const Interface::LinuxIntf *intf = sync_->linuxIntf(path.intf);
  if (!intf) {
    path.error = path.intf.name() + ": no such interface";
    return path;
  }
  path.srcEthAddr = intf->ethAddr;
  path.mtu = intf->mtu;
  return path;
}

} // namespace LspPingTool
