#pragma once

#include "Orv/Types.h"

// What a via does to the top label of a packet it forwards. The forwarding
// tables store the action as a byte, and readers test it as a number: bit 1
// (value 2) adds a forwarding step after the label operation, so that
// `(action & ~2) == pop` holds exactly for the two popping actions.
namespace Mpls::LfibLabelAction {

inline constexpr Orv::U8 none = 0;
// Pop the top label and forward what is below it.
inline constexpr Orv::U8 pop = 1;
// Replace the top label by the via's outgoing labels.
inline constexpr Orv::U8 swap = 2;
// Pop the top label, then forward on the via's FEC.
inline constexpr Orv::U8 popAndForward = 3;
// Push the via's outgoing labels above the top label.
inline constexpr Orv::U8 push = 4;

} // namespace Mpls::LfibLabelAction
