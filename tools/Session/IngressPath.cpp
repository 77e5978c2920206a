#include "Session/IngressPath.h"

namespace Session {

std::string unusable(const IngressPath &path) {
  if (!path.error.empty()) {
    return path.error;
  }
  for (const Wirx::MplsLabel &label : path.labels) {
    if (!label.isWireLabel()) {
      return "label " + label.stringValue() + " does not fit 20 bits";
    }
  }
  return "";
}

} // namespace Session
