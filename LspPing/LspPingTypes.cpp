#include "LspPing/LspPingAddrType.h"
#include "LspPing/LspPingConstant.h"
#include "LspPing/LspPingDownstreamMappingTlvIpAndIntfLen.h"
#include "LspPing/LspPingDownstreamSignalingProtocol.h"
#include "LspPing/LspPingIntfAndLabelStackTlvIpAndIntfLen.h"
#include "LspPing/LspPingMode.h"
#include "LspPing/LspPingMsgType.h"
#include "LspPing/LspPingMultipathType.h"
#include "LspPing/LspPingReplyMode.h"
#include "LspPing/LspPingReturnCode.h"
#include "LspPing/LspPingSrIgpProtocol.h"
#include "LspPing/LspPingTargetFecSubTlvType.h"
#include "LspPing/LspPingTlvType.h"
#include "LspPing/LspPingTunnelType.h"

namespace LspPing {

namespace {

// Registered when the library is loaded, so that the hosting agent can show
// and set attributes of these types by name.
const Orv::EnumRegistration<LspPingMsgType> msgType;
const Orv::EnumRegistration<LspPingReplyMode> replyMode;
const Orv::EnumRegistration<LspPingReturnCode> returnCode;
const Orv::EnumRegistration<LspPingTlvType> tlvType;
const Orv::EnumRegistration<LspPingTargetFecSubTlvType> targetFecSubTlvType;
const Orv::EnumRegistration<LspPingAddrType> addrType;
const Orv::EnumRegistration<LspPingMultipathType> multipathType;
const Orv::EnumRegistration<LspPingIntfAndLabelStackTlvIpAndIntfLen> ifLen;
const Orv::EnumRegistration<LspPingDownstreamMappingTlvIpAndIntfLen> dsLen;
const Orv::EnumRegistration<LspPingSrIgpProtocol> srIgpProtocol;
const Orv::EnumRegistration<LspPingTunnelType> tunnelType;
const Orv::EnumRegistration<LspPingMode> mode;
const Orv::EnumRegistration<LspPingDownstreamSignalingProtocol>
    signalingProtocol;

} // namespace

LspPingConstant lspPingConstantFactory() { return LspPingConstant{}; }

} // namespace LspPing
