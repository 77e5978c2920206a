#include "tools/StateOptions.h"

namespace LspPingTool {

CLI::Validator stateSourceCheck() {
  return CLI::Validator(
      [](const std::string &text) -> std::string {
        return StateSource::fromString(text)
                   ? ""
                   : "'" + text +
                         "' is no state source (expected frr, "
                         "frr:NAME or kernel)";
      },
      "");
}

void addStateOptions(CLI::App &cmd, StateOptions &options,
                     const std::string &sourceOption) {
  cmd.add_option("--state", options.file,
                 "the router's state, a JSON file (docs/state-file.md); "
                 "with a source, its entries win")
      ->type_name("FILE");
  cmd.add_option_function<std::vector<std::string>>(
         sourceOption,
         [&options](const std::vector<std::string> &texts) {
           for (const std::string &text : texts) {
             options.sources.push_back(*StateSource::fromString(text));
           }
         },
         "read the state from SOURCE (repeatable): frr (vtysh), frr:NAME "
         "(vtysh -N NAME) or kernel (its label routes)")
      ->type_name("SOURCE")
      ->check(stateSourceCheck());
}

} // namespace LspPingTool
