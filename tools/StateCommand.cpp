#include "tools/StateCommand.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>
#include <string>

#include "tools/ExitStatus.h"
#include "tools/StateFile.h"
#include "tools/StateOptions.h"

namespace LspPingTool {

namespace {

using nlohmann::json;

struct Options {
  StateOptions state;
  bool json = false;
};

std::string labels(const json &entry) {
  std::string text;
  for (const json &label : entry.value("labels", json::array())) {
    text += " " + label.dump();
  }
  return text;
}

// "swap 18 via e2 10.1.23.3"
std::string via(const json &via) {
  std::string text = via.at("action").get<std::string>() + labels(via);
  if (via.contains("interface")) {
    text += " via " + via["interface"].get<std::string>();
  }
  if (via.contains("nexthop")) {
    text += " " + via["nexthop"].get<std::string>();
  }
  if (via.contains("fec")) {
    text += " to " + via["fec"].get<std::string>();
  }
  return text;
}

const json *keyed(const json &table, const json &key) {
  for (const json &entry : table) {
    if (entry.at("key") == key) {
      return &entry;
    }
  }
  return nullptr;
}

std::string source(const json &value) {
  return value.is_string() ? value.get<std::string>()
                           : "source " + value.dump();
}

// One line per entry of each table, in the order of docs/state-file.md.
void printText(std::ostream &out, const json &state) {
  const json none = json::array();
  if (state.contains("responder")) {
    for (const auto &[family, address] : state["responder"].items()) {
      out << "responder " << family << " " << address.get<std::string>()
          << "\n";
    }
  }
  for (const json &intf : state.value("interfaces", none)) {
    out << "interface " << intf["name"].get<std::string>() << " mtu "
        << intf["mtu"] << "\n";
  }
  const json bindings = state.value("bindings", json::object());
  for (const auto &[table, entries] : bindings.items()) {
    for (const json &entry : entries) {
      out << "binding " << table << " " << entry["fec"].get<std::string>();
      for (const json &label : entry["labels"]) {
        out << " label " << label["label"]
            << (label.value("inUse", true) ? "" : " (not in use)");
      }
      out << "\n";
    }
  }
  const json lfib = state.value("lfib", json::object());
  const json viaSets = lfib.value("viaSets", none);
  for (const json &route : lfib.value("routes", none)) {
    out << "route " << route["label"] << " " << source(route["source"]) << ":";
    const json *set = keyed(viaSets, route["viaSet"]);
    const bool extFec = set && set->at("type") == "extFec";
    const json vias = lfib.value(extFec ? "extFecVias" : "vias", none);
    const char *separator = " ";
    for (const json &key : set ? set->at("vias") : none) {
      if (const json *found = keyed(vias, key)) {
        out << separator << via(*found);
        separator = ", ";
      }
    }
    out << "\n";
  }
  for (const json &entry : state.value("hardware", none)) {
    out << "hardware " << entry["label"] << " "
        << entry["state"].get<std::string>() << "\n";
  }
  for (const json &entry : state.value("fib", none)) {
    out << "fib " << entry["fec"].get<std::string>() << ":";
    const char *separator = " ";
    for (const json &hop : entry["vias"]) {
      out << separator << via(hop);
      separator = ", ";
    }
    out << "\n";
  }
  for (const json &path : state.value("rsvp", none)) {
    out << "rsvp " << path["tunnelDst"].get<std::string>() << " tunnel "
        << path["tunnelId"] << " "
        << path["extendedTunnelId"].get<std::string>() << " lsp "
        << path["lspId"] << " label " << path["label"] << "\n";
  }
  for (const json &tunnel : state.value("tiLfaTunnels", none)) {
    out << "tiLfaTunnel " << tunnel["id"] << " via "
        << tunnel["interface"].get<std::string>() << " "
        << tunnel["nexthop"].get<std::string>() << labels(tunnel) << "\n";
  }
}

int showState(const Options &o) {
  if (o.state.empty()) {
    std::cerr << "lspping: state: give --from SOURCE, --state FILE or both "
                 "(see --help)\n";
    return exitError;
  }
  const StateReading reading = readState(o.state.file, o.state.sources);
  for (const std::string &note : reading.notes) {
    std::cerr << "lspping: state: " << note << "\n";
  }
  if (!reading.document) {
    std::cerr << "lspping: state: " << reading.error << "\n";
    return exitError;
  }
  // What is printed is what a responder would load: it must load.
  try {
    loadStateDocument(*reading.document, "the state read");
  } catch (const StateFileError &e) {
    std::cerr << "lspping: state: " << e.what() << "\n";
    return exitError;
  }
  if (o.json) {
    std::cout << stateDocumentText(*reading.document) << "\n";
  } else {
    printText(std::cout, *reading.document);
  }
  return exitOk;
}

} // namespace

void addStateCommand(CLI::App &app, int &status) {
  auto o = std::make_shared<Options>();
  CLI::App *cmd = app.add_subcommand(
      "state",
      "Print the forwarding state a router's echo responder answers from, "
      "read from FRR (through vtysh), the kernel's label routes or a state "
      "file, combined as `responder` and `respond` combine them: one line "
      "per entry, or with --json the state file it makes (which --state "
      "reads back, for example edited as an override).");
  addStateOptions(*cmd, o->state, "--from");
  cmd->add_flag("--json", o->json,
                "print the state as a state file, one JSON object on one "
                "line");
  cmd->footer("Examples:\n"
              "  lspping state --from frr\n"
              "  lspping state --from frr:r1 --json > r1.json\n"
              "  lspping state --from frr:r1 --state override.json\n");
  cmd->callback([o, &status] { status = showState(*o); });
}

} // namespace LspPingTool
