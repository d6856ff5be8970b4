#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "ctl/Command.h"

namespace CLI {
class Option;
}

namespace installer::ctl {

// Options and arguments whose texts are taken as they stand. Every text that a command takes is
// declared by one of these; the library's own way takes texts in brackets apart.
CLI::Option* addText(CLI::App& line, const std::string& name, std::optional<std::string>& text,
                     const std::string& description);
// Any number of texts.
CLI::Option* addTexts(CLI::App& line, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description);

// What one command line asks for: its help, something to be done, or it cannot be understood.
struct HelpWanted {
  std::string text;
};
struct Misunderstood {
  std::string reason;
};
struct Order {
  Action action;
  bool json = false;
  std::string color;
};

// Reads what stands behind the command's name.
std::variant<HelpWanted, Misunderstood, Order> readCommandLine(
    const Command& command, const std::vector<std::string>& arguments);

}  // namespace installer::ctl
