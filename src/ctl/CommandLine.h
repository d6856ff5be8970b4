#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "ctl/Command.h"

namespace CLI {
class Option;
class Validator;
}  // namespace CLI

namespace installer::ctl {

// Options and arguments whose texts are taken as they stand. Every text that a command takes is
// declared by one of these; the library's own way takes texts in brackets apart.
CLI::Option* addText(CLI::App& line, const std::string& name, std::optional<std::string>& text,
                     const std::string& description);
// Any number of texts.
CLI::Option* addTexts(CLI::App& line, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description);

// What is wrong with an empty text, as a check of an option: a shell's variable that is not set
// would pass for an option that is not given.
std::string whyNoText(const std::string& text);

// That a text is one of the words. They are told to who asks what can be written there.
CLI::Validator oneOf(const std::vector<std::string>& words);
// The words of that; none for an option that has any other value, or none.
std::vector<std::string> wordsOf(CLI::Option& option);

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
  std::string color = "auto";
};

// Adds to an empty command line what every command has, and what this one adds to it. The order
// must live while the line is read, and holds then what was.
void declareLine(const Command& command, CLI::App& line, Order& order);

// The word in the form in which the line knows it: the installer's own option has one dash.
std::string lineWord(const std::string& argument);

// Reads what stands behind the command's name.
std::variant<HelpWanted, Misunderstood, Order> readCommandLine(
    const Command& command, const std::vector<std::string>& arguments);

}  // namespace installer::ctl
