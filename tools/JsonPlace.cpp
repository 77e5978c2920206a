#include "tools/JsonPlace.h"

#include <vector>

namespace LspPingTool {

namespace {

using nlohmann::json;

// A container being walked, at its current child.
struct Level {
  const json *container;
  json::const_iterator child;
  std::size_t index = 0;
};

json::json_pointer pointerOf(const std::vector<Level> &levels) {
  json::json_pointer at;
  for (const Level &level : levels) {
    if (level.container->is_object()) {
      at /= level.child.key();
    } else {
      at /= level.index;
    }
  }
  return at;
}

} // namespace

// Iterative, so that a deeply nested document cannot exhaust the stack.
json::json_pointer jsonPlace(const json &root, const json &value) {
  std::vector<Level> levels;
  if (&root != &value && root.is_structured()) {
    levels.push_back({&root, root.cbegin()});
  }
  while (!levels.empty()) {
    Level &level = levels.back();
    if (level.child == level.container->cend()) {
      levels.pop_back();
      if (!levels.empty()) {
        ++levels.back().child;
        ++levels.back().index;
      }
      continue;
    }
    const json &child = *level.child;
    if (&child == &value) {
      return pointerOf(levels);
    }
    if (child.is_structured() && !child.empty()) {
      levels.push_back({&child, child.cbegin()});
    } else {
      ++level.child;
      ++level.index;
    }
  }
  return json::json_pointer();
}

} // namespace LspPingTool
