#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "Interface/AllIntfStatusLocalDir.h"
#include "Interface/LinuxIntfSync.h"
#include "Kiv/EventLoop.h"
#include "LspPing/LspPingUtilRoot.h"
#include "Orv/Reactor.h"
#include "Session/Host.h"
#include "tools/DualStackUdpPam.h"
#include "tools/PathSource.h"

namespace LspPingTool {

// A Linux host of ping and trace sessions (`lspping ping`, `trace`): the
// library's client side started, as an agent starts it, on the interface
// platform that Interface::LinuxIntfSync fills from the kernel. The raw
// module of each interface requests leave by is a Wirx::LinuxRawPam on the
// interface's device, opened through the client root's Ethernet-device
// PAM manager; replies come back to one UDP port of both families
// (DualStackUdpPam), read through a Session::ReplyTap; time is the epoll
// loop's timer wheel. The way requests leave comes from a PathSource,
// completed with the interface's MAC address and MTU from the kernel.
//
// Nothing throws: open() and start() say why they cannot in one line, and
// what fails later (a send refused) is logged through `log`.
class LinuxSessionHost : public Session::Host, private Orv::Reactor {
public:
  using Log = std::function<void(const std::string &)>;

  // `loop` and `paths` must outlive this.
  LinuxSessionHost(Kiv::EventLoop &loop, const PathSource &paths, Log log);
  LinuxSessionHost(const LinuxSessionHost &) = delete;
  LinuxSessionHost &operator=(const LinuxSessionHost &) = delete;
  ~LinuxSessionHost() override;

  // Reads the kernel's interfaces and addresses, and follows them from
  // then on; false, with `error`, when the kernel cannot be asked.
  bool open(std::string &error);
  const Interface::LinuxIntfSync &intfs() const { return *sync_; }
  const Ip::VrfIpIntfStatus &ipv4() const { return *vrfIpIntfStatus_; }
  const Ip6::VrfIp6IntfStatus &ipv6() const { return *vrfIp6IntfStatus_; }

  // Opens the UDP module for the families asked for and starts the client
  // side, with raw modules on `txIntfs` (and no others: the client side
  // would have one on every interface with an address). False, with
  // `error`, when a module cannot be opened.
  bool start(const std::set<Wirx::IntfId> &txIntfs, bool ipv4, bool ipv6,
             std::string &error);

  // Opens raw modules on `intfs` too, for targets that leave by interfaces
  // the host was not started with. False, with `error`, when one cannot be
  // opened.
  bool txIntfsAdd(const std::set<Wirx::IntfId> &intfs, std::string &error);

  LspPing::LspPingClientRoot &clientRoot() const override {
    return *clientRoot_;
  }
  Kiv::TimerWheel &timerWheel() const override { return loop_.wheel(); }
  const Session::ReplyTap &replyTap() const override { return *replyTap_; }
  Session::IngressPath
  ingressPath(const Session::Target &target) const override;

private:
  Orv::Ptr<Wirx::Pam> openRaw(const Interface::EthDevPamParams &params);
  // (Re)opens the raw modules of `txIntfs_`; false, with `error`, when the
  // one of `intfs` cannot be opened.
  bool openRaws(const std::set<Wirx::IntfId> &intfs, std::string &error);

  Kiv::EventLoop &loop_;
  const PathSource &paths_;
  const Log log_;
  Orv::Ptr<Interface::AllIntfStatusDir> allIntfStatusDir_;
  Orv::Ptr<Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir_;
  Orv::Ptr<KernelNetInfo::Status> kniStatus_;
  Orv::Ptr<Ip::VrfIpIntfStatus> vrfIpIntfStatus_;
  Orv::Ptr<Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus_;
  Orv::Ptr<Interface::LinuxIntfSync> sync_;
  std::set<Wirx::IntfId> txIntfs_;
  // Why the raw module of an interface could not be opened.
  std::map<Wirx::IntfId, std::string> rawErrors_;
  Orv::Ptr<DualStackUdpPam> udpPam_;
  Orv::Ptr<Session::ReplyTap> replyTap_;
  Orv::Ptr<LspPing::LspPingUtilRoot> utilRoot_;
  Orv::Ptr<LspPing::LspPingClientRoot> clientRoot_;
};

} // namespace LspPingTool
