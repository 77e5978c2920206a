// Feeds arbitrary bytes to the echo-message parser as a UDP payload. The
// parser must never crash, read outside the packet or throw: whatever it is
// given, it reports valid() or a reason.
#include <cstddef>
#include <cstdint>

#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingTlvHdr.h"
#include "fuzz/FuzzInput.h"

using FuzzInput::consume;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  auto pkt = FuzzInput::packetOf(data, size);
  if (!pkt) {
    return -1;
  }
  auto parser = LspPing::lspPingPduParserFactory(pkt, 0);
  parser->initializedIs(true);

  consume(parser->valid());
  consume(parser->reason().size());
  consume(parser->tlvSupported());
  if (const LspPing::LspPingHdr *hdr = parser->lspPingHdr()) {
    consume(hdr->version() + hdr->globalFlags() + hdr->messageType +
            hdr->replyMode + hdr->returnCode + hdr->returnSubcode +
            hdr->senderHandle() + hdr->sequenceNumber() + hdr->tsSentSeconds() +
            hdr->tsSentmSeconds() + hdr->tsRcvdSeconds() +
            hdr->tsRcvdmSeconds());
    consume(hdr->stringValue().size());
  }
  for (Orv::U32 i = 0; i < parser->tlvNum(); ++i) {
    const Orv::U32 offset = parser->tlvOffset(i);
    consume(offset);
    // Every recorded TLV header lies inside the packet.
    if (offset + sizeof(LspPing::LspPingTlvHdr) > pkt->frontBytes()) {
      __builtin_trap();
    }
    const auto *tlv =
        reinterpret_cast<const LspPing::LspPingTlvHdr *>(pkt->data() + offset);
    consume(tlv->type() + tlv->totalLength());
  }
  return 0;
}
