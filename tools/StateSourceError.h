#pragma once

#include <stdexcept>

namespace LspPingTool {

// Why a source of forwarding state (FRR, the kernel) could not be read, in
// one line naming the source and, where there is one, the command and the
// place in its output.
class StateSourceError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

} // namespace LspPingTool
