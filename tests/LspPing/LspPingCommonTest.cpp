#include <gtest/gtest.h>

#include "LspPing/LspPamPipe.h"
#include "LspPing/LspPingClientRxMsgPipeColl.h"
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
// as the pipe says one is there.
struct Receiver : Orv::Reactor {
  explicit Receiver(LspPingMsgPipe &pipe) {
    watch(pipe, LspPingMsgPipe::readableCountAttr,
          [this, &pipe] { taken.push_back(pipe.rxMsg()->offset()); });
  }
  std::vector<U16> taken;
};

TEST(LspPingMsgPipe, HandsOverEachMessageSynchronously) {
  auto pipe = lspPingMsgPipeFactory("client7");
  EXPECT_EQ(pipe->rxMsg(), nullptr);
  EXPECT_EQ(pipe->readableCount(), 0u);
  Receiver receiver(*pipe);
  for (U16 offset : {10, 20, 30}) {
    pipe->txMsgIs(message(offset));
  }
  EXPECT_EQ(receiver.taken, (std::vector<U16>{10, 20, 30}));
  EXPECT_EQ(pipe->readableCount(), 3u);
  EXPECT_EQ(pipe->msgHolder(), nullptr);
  EXPECT_EQ(pipe->name().stringValue(), "client7");
}

TEST(LspPingMsgPipeDeathTest, SecondMessageIntoAFullSlotAborts) {
  auto pipe = lspPingMsgPipeFactory("client7");
  pipe->txMsgIs(message(1));
  EXPECT_DEATH(pipe->txMsgIs(message(2)), "msgHolder_ == __null");
}

TEST(LspPingClientRxMsgPipeColl, NotifiesPerClient) {
  auto pipes = lspPingClientRxMsgPipeCollFactory("lpcrpc");
  struct Watcher : Orv::Reactor {
    std::vector<U32> keys;
  } watcher;
  watcher.watch(*pipes, LspPingClientRxMsgPipeColl::clientRxMsgPipeAttr,
                [&](const U32 &id) { watcher.keys.push_back(id); });
  auto pipe = lspPingMsgPipeFactory("5");
  pipes->clientRxMsgPipeIs(5, pipe);
  pipes->clientRxMsgPipeIs(5, pipe);
  pipes->clientRxMsgPipeIs(6, lspPingMsgPipeFactory("6"));
  EXPECT_EQ(pipes->clientRxMsgPipe(5), pipe);
  EXPECT_EQ(pipes->clientRxMsgPipe(9), nullptr);
  pipes->clientRxMsgPipeDelAll();
  EXPECT_EQ(watcher.keys, (std::vector<U32>{5, 6, 5, 6}));
}

TEST(LspPamPipe, WhatIsSentCanBeReadBack) {
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
  EXPECT_EQ(pam->readableCount(), 2u);
}

TEST(LspPamPipeDeathTest, OnePacketAtATime) {
  auto pam = lspPamPipeFactory("loop");
  pam->txPktIs(Wirx::Pkt::make());
  EXPECT_DEATH(pam->txPktIs(Wirx::Pkt::make()), "!rxPktHolderShadow\\(\\)");
}

} // namespace
} // namespace LspPing
