// The manual page and the bash completion against the program's own --help:
// every subcommand has its section in lspping(1) and its branch in the
// completion, and every option of the subcommand's --help is in both.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "RunProgram.h"

namespace {

std::string sourceFile(const std::string &name) {
  const char *env = std::getenv("LSPPING_SOURCE_DIR");
  std::ifstream in(std::filesystem::path(env ? env : LSPPING_SOURCE_DIR) /
                   name);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// The lines of `text` under the heading `heading` (as "Options:"), up to the
// next blank line.
std::vector<std::string> block(const std::string &text,
                               const std::string &heading) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  bool inside = false;
  for (std::string line; std::getline(in, line);) {
    if (line == heading) {
      inside = true;
    } else if (inside && line.empty()) {
      break;
    } else if (inside) {
      lines.push_back(line);
    }
  }
  return lines;
}

std::vector<std::string> subcommands() {
  std::vector<std::string> names;
  const std::regex name("^  ([a-z]+) ");
  for (const std::string &line :
       block(LspPingTest::runLspping("--help").output, "Subcommands:")) {
    std::smatch match;
    if (std::regex_search(line, match, name)) {
      names.push_back(match[1]);
    }
  }
  return names;
}

// The options of `lspping SUBCOMMAND --help`, short and long, but --help.
std::vector<std::string> options(const std::string &subcommand) {
  std::vector<std::string> found;
  const std::regex option("(^  |,)(-[A-Za-z]|--[a-z][a-z0-9-]*)");
  for (const std::string &line :
       block(LspPingTest::runLspping(subcommand + " --help").output,
             "Options:")) {
    for (auto it = std::sregex_iterator(line.begin(), line.end(), option);
         it != std::sregex_iterator(); ++it) {
      const std::string name = (*it)[2];
      if (name != "-h" && name != "--help") {
        found.push_back(name);
      }
    }
  }
  return found;
}

// The subcommand's section of the manual page, "-" written "\-" as roff
// wants it.
std::string manualSection(const std::string &page,
                          const std::string &subcommand) {
  std::string title = ".SH LSPPING ";
  for (const char c : subcommand) {
    title += char(std::toupper(static_cast<unsigned char>(c)));
  }
  const auto start = page.find(title + "\n");
  if (start == std::string::npos) {
    return "";
  }
  return page.substr(start, page.find("\n.SH ", start + 1) - start);
}

// The words of the completion's `options=` for the subcommand, each between
// single spaces.
std::string completionOptions(const std::string &script,
                              const std::string &subcommand) {
  std::smatch match;
  const std::regex branch("\n  " + subcommand + "\\)\n +options=\"([^\"]*)\"");
  if (!std::regex_search(script, match, branch)) {
    return "";
  }
  return " " + std::regex_replace(match[1].str(), std::regex("\\s+"), " ") +
         " ";
}

std::string roff(const std::string &option) {
  return std::regex_replace(option, std::regex("-"), "\\-");
}

TEST(ManualPage, CoversEverySubcommandAndOption) {
  const std::string page = sourceFile("docs/lspping.1");
  const std::string completion =
      sourceFile("packaging/lspping.bash-completion");
  const std::vector<std::string> names = subcommands();
  ASSERT_GE(names.size(), 5u);
  for (const std::string &subcommand : names) {
    const std::string section = manualSection(page, subcommand);
    const std::string words = completionOptions(completion, subcommand);
    EXPECT_NE(section, "") << "no section for " << subcommand;
    EXPECT_NE(words, "") << "no completion for " << subcommand;
    EXPECT_NE(page.find("\n.B lspping " + subcommand), std::string::npos)
        << subcommand << " is not in the synopsis";
    for (const std::string &option : options(subcommand)) {
      EXPECT_NE(section.find(roff(option)), std::string::npos)
          << subcommand << " " << option << " is not in the manual page";
      EXPECT_NE(words.find(" " + option + " "), std::string::npos)
          << subcommand << " " << option << " is not completed";
    }
  }
}

} // namespace
