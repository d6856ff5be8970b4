#pragma once

#include <functional>
#include <span>
#include <string_view>

namespace CLI {
class App;
}

namespace installer::ctl {

struct Surroundings;

// What one number of a command's exit status tells.
struct ExitStatus {
  int number;
  std::string_view meaning;
};

// Those that every command has, out of the way of its own.
inline constexpr int kUsageError = 64;
inline constexpr int kInternalError = 70;
inline constexpr int kOutputError = 74;
inline constexpr ExitStatus kCommonStatuses[] = {
    {kUsageError, "the command line cannot be understood"},
    {kInternalError, "the machine lacks memory or a library that is needed"},
    {kOutputError, "the answer could not be written"},
};

// What a command does once its command line is read. The answer is the exit status.
using Action = std::function<int(Surroundings&)>;

// One command of the program.
struct Command {
  std::string_view name;
  std::string_view summary;      // for the list of commands: no capital letter, no full stop
  std::string_view description;  // for its own help: paragraphs with an empty line between them
  std::span<const ExitStatus> statuses;  // its own, without the common ones

  // Adds options and arguments to an empty command line, and answers what is to be done with what
  // they will hold when it has been read. --help, --json and --color are there already.
  Action (*declare)(CLI::App& line);
};

}  // namespace installer::ctl
