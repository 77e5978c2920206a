// Feeds arbitrary bytes to the echo-message parser as a UDP payload. The
// parser must never crash, read outside the packet or throw: whatever it is
// given, it reports valid() or a reason.
#include <cstddef>
#include <cstdint>

#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingTlvHdr.h"
#include "Wirx/Pkt.h"

namespace {

// Keeps the optimizer from dropping reads whose results are otherwise unused.
volatile std::uint64_t sink;

void consume(std::uint64_t v) { sink = sink + v; }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data,
                                      std::size_t size) {
  if (size > Wirx::Pkt::capacity) {
    return -1;
  }
  // The payload ends where the buffer does, so that a read past the message
  // leaves the buffer instead of landing in unused tail room. For the packet
  // the pool hands out here (the last of its block) that is past the end of
  // a heap block, where the address sanitizer sees it.
  const auto len = static_cast<Orv::U32>(size);
  auto pkt = Wirx::Pkt::copyOf(data, len, Wirx::Pkt::capacity - len);
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
