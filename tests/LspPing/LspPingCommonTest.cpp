#include <gtest/gtest.h>

#include "LspPing/LspPamPipe.h"
#include "LspPing/LspPingMsgPipe.h"
#include "Orv/Factory.h"
#include "Orv/Reactor.h"
#include "Wirx/IpAddr.h"

namespace LspPing {
namespace {

Orv::Ptr<LspPingMsg> message(U16 offset) {
  return lspPingMsgFactory(Wirx::Pkt::make(), offset, Wirx::IpAddr(0x0a000001),
                           3503, nullptr);
}

// A receiver as the client's receive side is: it takes each message as soon
// as the pipe says one is there, so the slot is free for the next.
TEST(LspPingMsgPipe, HandsOverEachMessageSynchronously) {
  auto pipe = lspPingMsgPipeFactory("client7");
  struct Receiver : Orv::Reactor {
    std::vector<U16> taken;
  } receiver;
  receiver.watch(*pipe, LspPingMsgPipe::readableCountAttr,
                 [&] { receiver.taken.push_back(pipe->rxMsg()->offset()); });
  for (U16 offset : {10, 20, 30}) {
    pipe->txMsgIs(message(offset));
  }
  EXPECT_EQ(receiver.taken, (std::vector<U16>{10, 20, 30}));
  EXPECT_EQ(pipe->msgHolder(), nullptr);
}

TEST(LspPingMsgPipeDeathTest, SecondMessageIntoAFullSlotAborts) {
  auto pipe = lspPingMsgPipeFactory("client7");
  pipe->txMsgIs(message(1));
  EXPECT_DEATH(pipe->txMsgIs(message(2)), "msgHolder_ == __null");
}

TEST(LspPamPipeDeathTest, WhatIsSentIsReadBackOneAtATime) {
  auto object = Orv::create("LspPing::LspPamPipe", "loop");
  auto *pam = dynamic_cast<Wirx::Pam *>(object.get());
  ASSERT_NE(pam, nullptr);
  EXPECT_EQ(pam->writableCount(), 1u) << "writable once initialized";
  struct Reader : Orv::Reactor {
    std::vector<Orv::Ptr<Wirx::Pkt>> got;
  } reader;
  reader.watch(*pam, Wirx::Pam::readableCountAttr,
               [&] { reader.got.push_back(pam->rxPkt()); });
  auto pkt = Wirx::Pkt::make();
  pam->txPktIs(pkt);
  pam->txPktIs(Wirx::Pkt::make());
  ASSERT_EQ(reader.got.size(), 2u);
  EXPECT_EQ(reader.got[0], pkt);
  EXPECT_EQ(pam->rxPkt(), nullptr);

  reader.unwatch(*pam);
  pam->txPktIs(Wirx::Pkt::make());
  EXPECT_DEATH(pam->txPktIs(Wirx::Pkt::make()), "!rxPktHolderShadow\\(\\)");
}

} // namespace
} // namespace LspPing
