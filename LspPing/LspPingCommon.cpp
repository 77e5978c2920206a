#include "LspPing/LspPamPipe.h"
#include "LspPing/LspPingClientRxMsgPipeColl.h"
#include "LspPing/LspPingMsg.h"
#include "LspPing/LspPingMsgPipe.h"
#include "Orv/Assert.h"
#include "Orv/Factory.h"
#include "Orv/Trace.h"

namespace LspPing {

namespace {

Orv::TraceSource trace("LspPing/LspPingCommon");

const Orv::FactoryRegistration
    pamPipeFactory("LspPing::LspPamPipe",
                   [](const Orv::Name &name) -> Orv::Ptr<Orv::Object> {
                     return lspPamPipeFactory(name);
                   });

} // namespace

Orv::Ptr<LspPingMsg>
lspPingMsgFactory(Orv::Ptr<Wirx::Pkt> pkt, U16 offset,
                  const Wirx::IpGenAddr &ipGenAddr, U16 port,
                  Orv::Ptr<const LspPingPduParser> lspPingPduParser) {
  return Orv::make<LspPingMsg>(std::move(pkt), offset, ipGenAddr, port,
                               std::move(lspPingPduParser));
}

void LspPingMsgPipe::txMsgIs(const Orv::Ptr<LspPingMsg> &msg) {
  ORV_ASSERT(msgHolder_ == NULL);
  msgHolder_ = msg;
  readableCountInc(1);
}

Orv::Ptr<LspPingMsg> LspPingMsgPipe::rxMsg() { return std::move(msgHolder_); }

void LspPingMsgPipe::readableCountInc(U32 n) {
  assign(readableCount_, readableCount_ + n, readableCountAttr);
}

Orv::Ptr<LspPingMsgPipe> lspPingMsgPipeFactory(const Orv::Name &name) {
  return Orv::make<LspPingMsgPipe>(name);
}

Orv::Ptr<LspPingClientRxMsgPipeColl>
lspPingClientRxMsgPipeCollFactory(const Orv::Name &name) {
  return Orv::make<LspPingClientRxMsgPipeColl>(name);
}

LspPamPipe::LspPamPipe(const Orv::Name &name) : Pam(name) {
  handleInitialized();
}

void LspPamPipe::txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) {
  ORV_TRACE(trace, 8, "virtual void LspPing::LspPamPipe::txPktIs(const Ptr&)");
  ORV_ASSERT(!rxPktHolderShadow());
  rxPktHolderShadow_ = pkt;
  readableCountInc(1);
}

void LspPamPipe::doGetRxPkt() {
  ORV_TRACE(trace, 8, "virtual void LspPing::LspPamPipe::doGetRxPkt()");
  rxPktHolderIs(std::move(rxPktHolderShadow_));
}

void LspPamPipe::handleInitialized() {
  ORV_TRACE(trace, 8, "void LspPing::LspPamPipe::handleInitialized()");
  initialized_ = true;
  writableCountInc(1);
}

Orv::Ptr<LspPamPipe> lspPamPipeFactory(const Orv::Name &name) {
  return Orv::make<LspPamPipe>(name);
}

} // namespace LspPing
