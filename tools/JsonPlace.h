#pragma once

#include <nlohmann/json.hpp>

namespace LspPingTool {

// The JSON pointer of `value` within `root`, found by its address; empty
// when `value` is `root` or lies outside it. The readers of large
// documents keep no path while all goes well and pay for one only when
// they report a mistake.
nlohmann::json::json_pointer jsonPlace(const nlohmann::json &root,
                                       const nlohmann::json &value);

} // namespace LspPingTool
