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
  EXPECT_EQ(entry.word(), 0xABCDEB06u);
  EXPECT_EQ(entry.label().value(), 0xABCDEu);
  EXPECT_EQ(entry.tc(), 5);
  EXPECT_TRUE(entry.bos());
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

TEST(LspPingDownstreamLabelEntry, OrdersByTheWordAndTestsNull) {
  EXPECT_LT(LspPingDownstreamLabelEntry(0, 255, 255, 255),
            LspPingDownstreamLabelEntry(1, 0, 0, 0));
  EXPECT_LT(LspPingDownstreamLabelEntry(1, 0, 0, 0),
            LspPingDownstreamLabelEntry(1, 0, 0, 1));
  EXPECT_NE(LspPingDownstreamLabelEntry(1, 0, 0, 0),
            LspPingDownstreamLabelEntry(0, 0, 0, 1));
  EXPECT_TRUE(!LspPingDownstreamLabelEntry());
  EXPECT_FALSE(!LspPingDownstreamLabelEntry(0, 0, 0, 1));
  EXPECT_EQ(lspPingDownstreamLabelEntryFactory(),
            LspPingDownstreamLabelEntry());
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

TEST(LspPingDownstreamLabelStack, EqualityOverTheUnionOfRangesThenSize) {
  LspPingDownstreamLabelStack a;
  a.labelEntryIs(0, entryOf(16, true));
  a.size = 1;
  LspPingDownstreamLabelStack b = a;
  b.size = 2;
  EXPECT_NE(a, b) << "same entries, different size";
  b.size = 1;
  b.labelEntryIs(1, LspPingDownstreamLabelEntry());
  EXPECT_EQ(a, b) << "an extra default entry beyond the other's range";
  EXPECT_EQ(b, a);
  b.labelEntryIs(1, entryOf(0, false));
  EXPECT_NE(a, b);

  LspPingDownstreamLabelStack empty;
  EXPECT_TRUE(!empty);
  empty.labelEntryIs(2, LspPingDownstreamLabelEntry());
  EXPECT_TRUE(!empty);
  empty.size = 1;
  EXPECT_FALSE(!empty);
}

TEST(LspPingMultipathBitset, MissingBytesAreZero) {
  LspPingMultipathBitset a(2);
  EXPECT_EQ(a.size, 2u);
  EXPECT_TRUE(a.bitset.empty());
  EXPECT_FALSE(!a);
  EXPECT_TRUE(!LspPingMultipathBitset(0));
  LspPingMultipathBitset b(2);
  b.bitsetIs(1, 0);
  EXPECT_EQ(a, b);
  b.bitsetIs(1, 0x80);
  EXPECT_NE(a, b);
  EXPECT_EQ(b.bitset[1], 0x80);
  EXPECT_EQ(b.bitset[0], 0);
  EXPECT_NE(LspPingMultipathBitset(3), LspPingMultipathBitset(2));
  EXPECT_EQ(lspPingMultipathBitsetFactory(3), LspPingMultipathBitset(3));
}

TEST(LspPingDownstreamMappingInfo, ConstructorTakesFieldsInOrder) {
  const auto info = sampleMapping();
  EXPECT_EQ(info.mtu, 1500);
  EXPECT_EQ(info.addrType, 1);
  EXPECT_EQ(info.dsFlags, 2);
  EXPECT_EQ(info.dsIpAddr, addr("10.0.0.2"));
  EXPECT_EQ(info.dsIntfAddr, addr("10.0.0.3"));
  EXPECT_EQ(info.multipathType, 8);
  EXPECT_EQ(info.depthLimit, 4);
  EXPECT_EQ(info.dsMultipathBaseAddr, addr("127.0.0.0"));
  EXPECT_EQ(info.dsMultipathBitset.bitset[3], 1);
  EXPECT_EQ(info.labelStack.size, 2);
  EXPECT_TRUE(info.valid);
  EXPECT_EQ(lspPingDownstreamMappingInfoFactory(
                info.mtu, info.addrType, info.dsFlags, info.dsIpAddr,
                info.dsIntfAddr, info.multipathType, info.depthLimit,
                info.dsMultipathBaseAddr, info.dsMultipathBitset,
                info.labelStack, info.valid),
            info);
}

TEST(LspPingDownstreamMappingInfo, NullOnlyForTheDefault) {
  LspPingDownstreamMappingInfo info;
  EXPECT_TRUE(!info);
  EXPECT_EQ(info, lspPingDownstreamMappingInfoFactory());
  info.valid = true;
  EXPECT_FALSE(!info);
  info = LspPingDownstreamMappingInfo();
  info.dsIpAddr = addr("0.0.0.0"); // an address, unlike the unset one
  EXPECT_FALSE(!info);
  info = LspPingDownstreamMappingInfo();
  info.labelStack.labelEntryIs(0, LspPingDownstreamLabelEntry());
  EXPECT_TRUE(!info);
}

TEST(LspPingDownstreamMappingInfo, CopyAndMoveKeepTheIndexRanges) {
  const auto info = sampleMapping();
  LspPingDownstreamMappingInfo copy = info;
  EXPECT_EQ(copy.dsMultipathBitset.bitset.indexBegin(), 0u);
  EXPECT_EQ(copy.dsMultipathBitset.bitset.indexEnd(), 4u);
  EXPECT_EQ(copy.labelStack.labelEntry.indexEnd(), 2u);
  LspPingDownstreamMappingInfo moved = std::move(copy);
  EXPECT_EQ(moved, info);
  EXPECT_EQ(moved.dsMultipathBitset.bitset.indexEnd(), 4u);
}

TEST(LspPingDownstreamMappingInfoSet, MissingIndicesReadAsTheDefault) {
  LspPingDownstreamMappingInfoSet set;
  EXPECT_TRUE(!set);
  set.lspPingDownstreamMappingInfoIs(3, sampleMapping());
  EXPECT_FALSE(!set);
  for (U8 i = 0; i < 3; ++i) {
    EXPECT_TRUE(!set.lspPingDownstreamMappingInfo[i]) << int(i);
  }
  EXPECT_EQ(set.lspPingDownstreamMappingInfo[3], sampleMapping());
  EXPECT_EQ(set.lspPingDownstreamMappingInfo.indexBegin(), 3u);

  LspPingDownstreamMappingInfoSet withDefault;
  withDefault.lspPingDownstreamMappingInfoIs(0, LspPingDownstreamMappingInfo());
  EXPECT_EQ(withDefault, LspPingDownstreamMappingInfoSet());
  EXPECT_TRUE(!withDefault);

  set.lspPingDownstreamMappingInfoIs(0, sampleMapping());
  auto it = set.lspPingDownstreamMappingInfoDel(
      set.lspPingDownstreamMappingInfo.begin());
  EXPECT_EQ(it->index, 3);
  set.lspPingDownstreamMappingInfoDel(3);
  EXPECT_EQ(set, lspPingDownstreamMappingInfoSetFactory());
  set.lspPingDownstreamMappingInfoIs(255, sampleMapping());
  set.lspPingDownstreamMappingInfoDelAll();
  EXPECT_TRUE(set.lspPingDownstreamMappingInfo.empty());
}

TEST(LspPingIntfAndLabelStackInfo, NullAndEquality) {
  EXPECT_TRUE(!LspPingIntfAndLabelStackInfo());
  EXPECT_EQ(lspPingIntfAndLabelStackInfoFactory(),
            LspPingIntfAndLabelStackInfo());
  Wirx::MplsLabelStack stack;
  stack.push(Wirx::MplsLabel(100));
  const auto info = lspPingIntfAndLabelStackInfoFactory(
      addr("10.1.1.1"), Wirx::IntfId("Ethernet1"), stack, true);
  EXPECT_FALSE(!info);
  auto other = info;
  other.labelStack.push(Wirx::MplsLabel(200));
  EXPECT_NE(other, info);
  other = info;
  other.valid = false;
  EXPECT_NE(other, info);
  EXPECT_FALSE(
      !LspPingIntfAndLabelStackInfo({}, Wirx::IntfId("Ethernet1"), {}, false));
}

TEST(LspPingPwInfo, NullAndEquality) {
  EXPECT_TRUE(!LspPingPwInfo());
  EXPECT_EQ(lspPingPwInfoFactory(), LspPingPwInfo());
  const auto pw = lspPingPwInfoFactory(addr("1.1.1.1"), addr("2.2.2.2"), 7, 5);
  EXPECT_FALSE(!pw);
  EXPECT_NE(pw, LspPingPwInfo(addr("2.2.2.2"), addr("1.1.1.1"), 7, 5));
  EXPECT_NE(pw, LspPingPwInfo(addr("1.1.1.1"), addr("2.2.2.2"), 7, 4));
  EXPECT_FALSE(!LspPingPwInfo({}, {}, 0, 1));
}

TEST(LspPingRequestInfo, DefaultIsNoCodeWithEmptyForwardingEntry) {
  const LspPingRequestInfo info;
  EXPECT_TRUE(!info);
  EXPECT_EQ(info, lspPingRequestInfoFactory(LspPingReturnCode::noRetCode, 0));
  EXPECT_TRUE(info.viaSet.via.empty());
  EXPECT_EQ(info.route.key.topLabel.value(), Wirx::MplsLabel::null);

  EXPECT_FALSE(!LspPingRequestInfo(LspPingReturnCode::noRetCode, 1));
  auto withRoute = LspPingRequestInfo();
  withRoute.route.source = 8;
  EXPECT_FALSE(!withRoute);
  EXPECT_NE(
      lspPingRequestInfoFactory(LspPingReturnCode::repRouterEgress, 1),
      lspPingRequestInfoFactory(LspPingReturnCode::labelSwitchedAtStackDep, 1));
}

TEST(LspPingValueText, PrintsTheOneLineForms) {
  EXPECT_EQ(streamed(LspPingDownstreamLabelEntry(0, 1, 0x01, 3)),
            "Value('LspPing::LspPingDownstreamLabelEntry', ** {'v0': 0, "
            "'v1': 1, 'v2': 1, 'v3': 3})");
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

TEST(LspPingValueText, RefusesAnotherTypesText) {
  const std::string pwText = streamed(LspPingPwInfo());
  EXPECT_FALSE(Orv::valueFromText<LspPingRequestInfo>(pwText));
  EXPECT_FALSE(Orv::valueFromText<LspPingDownstreamLabelStack>(
      "Value('LspPing::LspPingDownstreamLabelStack', ** {'labelEntry': "
      "{0: 5}, 'size': 1})"));
  EXPECT_FALSE(Orv::valueFromText<LspPingDownstreamLabelStack>(
      "Value('LspPing::LspPingDownstreamLabelStack', ** {'size': 256})"));
  EXPECT_FALSE(Orv::valueFromText<LspPingDownstreamMappingInfoSet>(
      "Value('LspPing::LspPingDownstreamMappingInfoSet', ** "
      "{'lspPingDownstreamMappingInfo': {256: "
      "Value('LspPing::LspPingDownstreamMappingInfo', ** {})}})"));
}

} // namespace
} // namespace LspPing
