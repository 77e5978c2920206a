#pragma once

#include "LspPing/LspPingRecord.h"
#include "Orv/Export.h"

namespace LspPing {

// The 32-byte echo header that starts every echo request and reply.
struct LSPPING_EXPORT LspPingHdr {
  U16Nbo versionNbo{0};
  U16Nbo globalFlagsNbo{0};
  U8 messageType = 0;   // LspPingMsgType
  U8 replyMode = 0;     // LspPingReplyMode
  U8 returnCode = 0;    // LspPingReturnCode
  U8 returnSubcode = 0; // label-stack depth at which the code applies
  U32Nbo senderHandleNbo{0};
  U32Nbo sequenceNumberNbo{0};
  U32Nbo tsSentSecondsNbo{0};
  U32Nbo tsSentmSecondsNbo{0}; // NTP fraction of a second
  U32Nbo tsRcvdSecondsNbo{0};
  U32Nbo tsRcvdmSecondsNbo{0}; // NTP fraction of a second

  U16 version() const { return versionNbo.value(); }
  U16 globalFlags() const { return globalFlagsNbo.value(); }
  U32 senderHandle() const { return senderHandleNbo.value(); }
  U32 sequenceNumber() const { return sequenceNumberNbo.value(); }
  U32 tsSentSeconds() const { return tsSentSecondsNbo.value(); }
  U32 tsSentmSeconds() const { return tsSentmSecondsNbo.value(); }
  U32 tsRcvdSeconds() const { return tsRcvdSecondsNbo.value(); }
  U32 tsRcvdmSeconds() const { return tsRcvdmSecondsNbo.value(); }

  // Version 1 or 2, and a request or a reply.
  bool valid() const;
  std::string stringValue() const;
};
static_assert(sizeof(LspPingHdr) == 32);

} // namespace LspPing
