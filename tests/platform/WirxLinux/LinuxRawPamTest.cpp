// The raw module over a veth pair between two namespaces: what the filter
// lets through, whole, tags and all, and what it keeps out.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Kiv/EventLoop.h"
#include "Netns.h"
#include "Wirx/LinuxRawPam.h"
#include "Wirx/Pkt.h"

namespace {

using Bytes = std::vector<Orv::U8>;

const std::string macA = "02:00:00:00:0a:01";
const std::string macB = "02:00:00:00:0b:01";
const Bytes ethA = {0x02, 0, 0, 0, 0x0a, 0x01};
const Bytes ethB = {0x02, 0, 0, 0, 0x0b, 0x01};

void put16(Bytes &bytes, Orv::U16 value) {
  bytes.push_back(Orv::U8(value >> 8));
  bytes.push_back(Orv::U8(value));
}

Bytes cat(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes &part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

// Ethernet to B, with VLAN tags (TPID, VLAN id) outermost first.
Bytes eth(Orv::U16 type, const Bytes &payload,
          std::vector<std::pair<Orv::U16, Orv::U16>> tags = {},
          const Bytes &dst = ethB) {
  Bytes frame = cat({dst, ethA});
  for (const auto &[tpid, id] : tags) {
    put16(frame, tpid);
    put16(frame, id);
  }
  put16(frame, type);
  return cat({frame, payload});
}

Bytes udp(Orv::U16 src, Orv::U16 dst) {
  Bytes bytes;
  put16(bytes, src);
  put16(bytes, dst);
  put16(bytes, 12);
  put16(bytes, 0);
  return cat({bytes, {'p', 'i', 'n', 'g'}});
}

// IPv4 with options making a 24-byte header, so the filter must read IHL.
Bytes ipv4(const Bytes &l4, Orv::U8 protocol = 17, Orv::U16 fragment = 0) {
  Bytes hdr = {0x46, 0};
  put16(hdr, Orv::U16(24 + l4.size()));
  put16(hdr, 0);
  put16(hdr, fragment);
  hdr.insert(hdr.end(), {1, protocol, 0, 0, 10, 0, 0, 1, 127, 0, 0, 1});
  hdr.insert(hdr.end(), {0x94, 4, 0, 0});
  return cat({hdr, l4});
}

Bytes ipv6(const Bytes &l4, bool hopByHop) {
  Bytes hdr = {0x60, 0, 0, 0};
  put16(hdr, Orv::U16(l4.size() + (hopByHop ? 8 : 0)));
  hdr.push_back(hopByHop ? 0 : 17);
  hdr.push_back(1);
  for (int i = 0; i < 2; ++i) {
    hdr.insert(hdr.end(), {0x20, 0x01, 0x0d, 0xb8});
    hdr.insert(hdr.end(), 11, 0);
    hdr.push_back(Orv::U8(i + 1));
  }
  if (hopByHop) {
    hdr.insert(hdr.end(), {17, 0, 5, 2, 0, 0, 1, 0});
  }
  return cat({hdr, l4});
}

Bytes mpls(Orv::U32 label, const Bytes &payload) {
  const Orv::U32 entry = label << 12 | 1 << 8 | 1;
  return cat({{Orv::U8(entry >> 24), Orv::U8(entry >> 16), Orv::U8(entry >> 8),
               Orv::U8(entry)},
              payload});
}

class LinuxRawPamTest : public testing::Test {
protected:
  void SetUp() override {
    LSPPING_NEED_NETNS();
    a_ = std::make_unique<LspPingTest::Netns>();
    b_ = std::make_unique<LspPingTest::Netns>();
    ASSERT_TRUE(
        a_->ip({"link", "add", devA_, "address", macA, "type", "veth", "peer",
                "name", devB_, "address", macB, "netns", b_->name()}));
    ASSERT_TRUE(a_->ip({"link", "set", devA_, "up"}));
    ASSERT_TRUE(b_->ip({"link", "set", devB_, "up"}));
    std::string error;
    {
      const LspPingTest::NetnsScope in(*a_);
      pamA_ = Wirx::LinuxRawPam::open(loop_, devA_, 3503, error);
    }
    ASSERT_TRUE(pamA_) << error;
    {
      const LspPingTest::NetnsScope in(*b_);
      pamB_ = Wirx::LinuxRawPam::open(loop_, devB_, 3503, error);
    }
    ASSERT_TRUE(pamB_) << error;
  }

  void send(const Bytes &frame) {
    pamA_->txPktIs(Wirx::Pkt::copyOf(frame.data(), Orv::U32(frame.size())));
  }

  // What each side received, until B has `marker`.
  void receiveUntil(const Bytes &marker) {
    const auto take = [](Wirx::LinuxRawPam &pam, std::vector<Bytes> &into) {
      while (const auto pkt = pam.rxPkt()) {
        into.emplace_back(pkt->data(), pkt->data() + pkt->frontBytes());
      }
    };
    EXPECT_TRUE(LspPingTest::runUntil(loop_, [&] {
      take(*pamA_, atA_);
      take(*pamB_, atB_);
      return !atB_.empty() && atB_.back() == marker;
    }));
  }

  Kiv::EventLoop loop_;
  std::unique_ptr<LspPingTest::Netns> a_, b_;
  const std::string devA_ = LspPingTest::uniqueName("va");
  const std::string devB_ = LspPingTest::uniqueName("vb");
  Orv::Ptr<Wirx::LinuxRawPam> pamA_, pamB_;
  std::vector<Bytes> atA_, atB_;
};

TEST_F(LinuxRawPamTest, PassesMplsAndEchoPortUdpWholeAndNothingElse) {
  const Orv::U16 q = 0x8100, ad = 0x88a8;
  const struct {
    const char *what;
    Bytes frame;
    bool passes;
  } cases[] = {
      {"MPLS", eth(0x8847, mpls(100, ipv4(udp(49152, 3503)))), true},
      // The kernel takes a single tag off into the packet's metadata; the
      // inner one of two stays in the frame.
      {"MPLS, one tag", eth(0x8847, mpls(101, {1, 2, 3, 4}), {{q, 7}}), true},
      {"IPv4 to 3503, two tags",
       eth(0x0800, ipv4(udp(49152, 3503)), {{ad, 20}, {q, 30}}), true},
      {"IPv4 from 3503", eth(0x0800, ipv4(udp(3503, 49152))), true},
      {"IPv6 to 3503", eth(0x86dd, ipv6(udp(49152, 3503), false)), true},
      {"IPv6 Hop-by-Hop to 3503, one tag",
       eth(0x86dd, ipv6(udp(49152, 3503), true), {{q, 9}}), true},
      {"IPv4 to 53", eth(0x0800, ipv4(udp(49152, 53))), false},
      {"IPv4 TCP 3503", eth(0x0800, ipv4(udp(49152, 3503), 6)), false},
      {"IPv4 later fragment", eth(0x0800, ipv4(udp(49152, 3503), 17, 0x0010)),
       false},
      {"IPv6 to 53, one tag", eth(0x86dd, ipv6(udp(49152, 53), true), {{q, 9}}),
       false},
      {"ARP", eth(0x0806, Bytes(28, 0)), false},
      {"IPv4 cut before the ports", eth(0x0800, Bytes{0x45, 0, 0, 28}), false},
      {"MPLS for another host",
       eth(0x8847, mpls(102, {}), {}, {0x02, 0, 0, 0, 0x0c, 0x01}), false},
  };
  std::vector<Bytes> expected;
  for (const auto &c : cases) {
    send(c.frame);
    if (c.passes) {
      expected.push_back(c.frame);
    }
  }
  const Bytes marker = eth(0x8847, mpls(999, {}));
  send(marker);
  expected.push_back(marker);
  receiveUntil(marker);
  EXPECT_EQ(atB_, expected);
  EXPECT_TRUE(atA_.empty()) << "a module never reads back what its host sent";
  EXPECT_EQ(pamA_->txErrors(), 0u);
  EXPECT_EQ(pamB_->rxKernelDrops(), 0u);
  EXPECT_EQ(pamA_->error(), "");
}

TEST_F(LinuxRawPamTest, FailuresAreOneLineNamingTheDevice) {
  std::string error;
  EXPECT_FALSE(Wirx::LinuxRawPam::open(loop_, "nosuchdev0", 3503, error));
  EXPECT_EQ(error, "nosuchdev0: no such interface");

  // A device going away takes the socket's binding with it: the socket
  // tells, and sending fails, counted and told; nothing throws.
  ASSERT_TRUE(a_->ip({"link", "del", devA_}));
  EXPECT_TRUE(LspPingTest::runUntil(loop_, [&] {
    EXPECT_FALSE(pamA_->rxPkt());
    return pamA_->rxErrors() == 1;
  }));
  EXPECT_EQ(pamA_->error(), devA_ + ": receive: Network is down");
  send(eth(0x8847, mpls(100, {})));
  EXPECT_EQ(pamA_->txErrors(), 1u);
  EXPECT_EQ(pamA_->error().rfind(devA_ + ": send: ", 0), 0u) << pamA_->error();
}

} // namespace
