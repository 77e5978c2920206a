#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "LspPing/LspPingDownstreamLabelEntry.h"
#include "LspPing/LspPingDownstreamLabelStack.h"
#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "LspPing/LspPingDownstreamMappingInfoSet.h"
#include "LspPing/LspPingIntfAndLabelStackInfo.h"
#include "LspPing/LspPingMultipathBitset.h"
#include "LspPing/LspPingPwInfo.h"
#include "LspPing/LspPingRequestInfo.h"

namespace LspPing {
namespace {

using Protocol = LspPingDownstreamSignalingProtocol;

Wirx::IpGenAddr addr(std::string_view text) {
  return *Wirx::IpGenAddr::fromString(text);
}

LspPingDownstreamLabelEntry entryOf(U32 label, bool bos) {
  return LspPingDownstreamLabelEntry::fromLabel(
      Wirx::MplsLabel(label), 0, bos, Protocol::dsInfoSignalingProtocolLdp);
}

template <class T> std::string streamed(const T &value) {
  std::ostringstream os;
  os << value;
  return os.str();
}

// Prints with operator<<, reads back with the runtime and compares.
template <class T> void expectRoundTrip(const T &value) {
  const std::string text = streamed(value);
  EXPECT_EQ(text, Orv::valueText(value));
  EXPECT_EQ(text.find('\n'), std::string::npos) << text;
  const auto back = Orv::valueFromText<T>(text);
  ASSERT_TRUE(back) << text;
  EXPECT_EQ(*back, value) << text;
  EXPECT_EQ(streamed(*back), text);
}

LspPingDownstreamMappingInfo sampleMapping() {
  LspPingMultipathBitset bits(4);
  bits.bitsetIs(0, 0xF0);
  bits.bitsetIs(3, 0x01);
  LspPingDownstreamLabelStack stack;
  stack.labelEntryIs(0, entryOf(16, false));
  stack.labelEntryIs(1, entryOf(3, true));
  stack.size = 2;
  return LspPingDownstreamMappingInfo(1500, 1, 2, addr("10.0.0.2"),
                                      addr("10.0.0.3"), 8, 4, addr("127.0.0.0"),
                                      bits, stack, true);
}

TEST(LspPingDownstreamLabelEntry, LaysOutLabelTcBosAndProtocol) {
  auto entry = LspPingDownstreamLabelEntry::fromLabel(
      Wirx::MplsLabel(0xABCDE), 5, true, Protocol::dsInfoSignalingProtocolIsis);
  EXPECT_EQ(entry, LspPingDownstreamLabelEntry(0xAB, 0xCD, 0xEB, 6));
  EXPECT_EQ(entry.label().value(), 0xABCDEu);
  EXPECT_EQ(entry.tc(), 5);
  EXPECT_EQ(entry.protocol(), Protocol::dsInfoSignalingProtocolIsis);

  // Each setter changes its own bits only.
  entry.labelIs(Wirx::MplsLabel(3));
  EXPECT_EQ(entry.word(), 0x00003B06u);
  entry.bosIs(false);
  EXPECT_EQ(entry.word(), 0x00003A06u);
  entry.tcIs(0);
  EXPECT_EQ(entry.word(), 0x00003006u);
  entry.protocolIs(Protocol::dsInfoSignalingProtocolStatic);
  EXPECT_EQ(entry, LspPingDownstreamLabelEntry::fromWord(0x00003001));
}

TEST(LspPingDownstreamLabelStack, ValidOnlyWithABottomWithinSize) {
  LspPingDownstreamLabelStack stack;
  EXPECT_FALSE(stack.valid());
  stack.labelEntryIs(0, entryOf(16, true));
  EXPECT_FALSE(stack.valid()) << "size 0";
  stack.size = 1;
  EXPECT_TRUE(stack.valid());

  stack.labelEntryIs(0, entryOf(16, false));
  stack.labelEntryIs(1, entryOf(17, true));
  EXPECT_FALSE(stack.valid()) << "bottom at index == size";
  stack.size = 2;
  EXPECT_TRUE(stack.valid());

  // A bottom past a gap of missing entries still counts.
  stack.labelEntryDel(1);
  stack.labelEntryIs(4, entryOf(18, true));
  EXPECT_FALSE(stack.valid());
  stack.size = 5;
  EXPECT_TRUE(stack.valid());
  stack.labelEntryDelAll();
  EXPECT_FALSE(stack.valid());
}

TEST(LspPingValueText, PrintsTheOneLineForms) {
  LspPingDownstreamLabelStack stack;
  stack.labelEntryIs(0, LspPingDownstreamLabelEntry(0, 1, 0x01, 3));
  stack.size = 1;
  EXPECT_EQ(streamed(stack),
            "Value('LspPing::LspPingDownstreamLabelStack', ** {'labelEntry': "
            "{0: Value('LspPing::LspPingDownstreamLabelEntry', ** {'v0': 0, "
            "'v1': 1, 'v2': 1, 'v3': 3})}, 'size': 1})");
  LspPingMultipathBitset bits(2);
  bits.bitsetIs(1, 0x80);
  EXPECT_EQ(streamed(bits), "Value('LspPing::LspPingMultipathBitset', ** "
                            "{'bitset': {1: 128}, 'size': 2})");
  EXPECT_EQ(streamed(LspPingDownstreamMappingInfo()),
            "Value('LspPing::LspPingDownstreamMappingInfo', ** {'mtu': 0, "
            "'addrType': 0, 'dsFlags': 0, 'dsIpAddr': 'unspecified', "
            "'dsIntfAddr': 'unspecified', 'multipathType': 0, 'depthLimit': 0, "
            "'dsMultipathBaseAddr': 'unspecified', 'dsMultipathBitset': "
            "Value('LspPing::LspPingMultipathBitset', ** {'bitset': {}, "
            "'size': 0}), 'labelStack': "
            "Value('LspPing::LspPingDownstreamLabelStack', ** {'labelEntry': "
            "{}, 'size': 0}), 'valid': False})");
  EXPECT_EQ(streamed(LspPingDownstreamMappingInfoSet()),
            "Value('LspPing::LspPingDownstreamMappingInfoSet', ** "
            "{'lspPingDownstreamMappingInfo': {}})");
  Wirx::MplsLabelStack labels;
  labels.push(Wirx::MplsLabel(100));
  labels.push(Wirx::MplsLabel(200));
  EXPECT_EQ(streamed(LspPingIntfAndLabelStackInfo(
                addr("10.1.1.1"), Wirx::IntfId("Ethernet1"), labels, true)),
            "Value('LspPing::LspPingIntfAndLabelStackInfo', ** {'addr': "
            "'10.1.1.1', 'intf': 'Ethernet1', 'labelStack': '[100, 200]', "
            "'valid': True})");
  EXPECT_EQ(streamed(LspPingPwInfo(addr("1.1.1.1"), addr("2::2"), 7, 5)),
            "Value('LspPing::LspPingPwInfo', ** {'senderAddr': '1.1.1.1', "
            "'receiverAddr': '2::2', 'pwId': 7, 'pwType': 5})");
  EXPECT_EQ(
      streamed(LspPingRequestInfo(LspPingReturnCode::repRouterEgress, 1)),
      "Value('LspPing::LspPingRequestInfo', ** {'retCode': repRouterEgress, "
      "'retSubcode': 1, 'viaSet': Value('Mpls::LfibViaSet', ** {'viaType': "
      "viaTypeNone, 'via': {}}), 'route': Value('Mpls::LfibRoute', ** "
      "{'key': Value('Mpls::RouteKey', ** {'topLabel': 'none'}), "
      "'viaSetKey': Value('Mpls::LfibViaSetKey', ** {'id': 0}), 'source': "
      "0})})");
}

TEST(LspPingValueText, EveryTypeReadsBackWhatItPrints) {
  expectRoundTrip(LspPingDownstreamLabelEntry(0xAB, 0xCD, 0xEF, 0x01));
  const auto mapping = sampleMapping();
  expectRoundTrip(mapping.labelStack);
  expectRoundTrip(mapping.dsMultipathBitset);
  expectRoundTrip(mapping);
  expectRoundTrip(LspPingDownstreamMappingInfo());

  LspPingDownstreamMappingInfoSet set;
  set.lspPingDownstreamMappingInfoIs(0, mapping);
  auto v6 = mapping;
  v6.addrType = 3;
  v6.dsIpAddr = addr("2001:db8::1");
  v6.dsMultipathBitset = LspPingMultipathBitset();
  set.lspPingDownstreamMappingInfoIs(2, v6);
  expectRoundTrip(set);

  Wirx::MplsLabelStack labels;
  labels.push(Wirx::MplsLabel(3));
  expectRoundTrip(LspPingIntfAndLabelStackInfo(
      addr("fe80::1"), Wirx::IntfId("Ethernet4/1"), labels, true));
  expectRoundTrip(LspPingIntfAndLabelStackInfo());
  expectRoundTrip(LspPingPwInfo(addr("1.1.1.1"), addr("2.2.2.2"), 7, 5));

  LspPingRequestInfo request(LspPingReturnCode::labelSwitchedAtStackDep, 2);
  request.route.key = Mpls::RouteKey::fromLabel(Wirx::MplsLabel(16));
  request.route.source = 8;
  request.viaSet.viaType = Mpls::LfibViaType::viaTypeMpls;
  request.viaSet.viaIs(0, Mpls::LfibViaKey{11});
  expectRoundTrip(request);
  expectRoundTrip(LspPingRequestInfo(LspPingReturnCode(99), 0));
}

} // namespace
} // namespace LspPing
