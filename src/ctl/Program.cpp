#include "ctl/Program.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>
#include <variant>

#include "base/LibraryLack.h"
#include "ctl/CommandLine.h"
#include "ctl/Completion.h"
#include "ctl/Help.h"
#include "ctl/Nearest.h"
#include "ctl/Output.h"
#include "ctl/Style.h"
#include "ctl/Surroundings.h"
#include "hotfix/Version.h"

namespace installer::ctl {

namespace {

constexpr const char* kHelp = "--help";
constexpr const char* kVersionOption = "--version";

int refuse(std::string_view reason) {
  complain(reason);
  return kUsageError;
}

int answer(std::string_view text, Output& out) {
  out.write(text);
  return 0;
}

int refuseCommand(const std::string& name, std::span<const Command> commands) {
  std::vector<std::string> names;
  for (const Command& command : commands) names.emplace_back(command.name);
  const bool isOption = name.starts_with('-');
  const auto meant =
      nearest(name, isOption ? std::vector<std::string>{kHelp, kVersionOption} : names);
  if (isOption && !meant)
    return refuse(
        fmt::format("\"{}\" stands before the command; hotfixctl --help lists all", name));
  return refuse(fmt::format(
      "there is no {} \"{}\"; {}", isOption ? "option" : "command", name,
      meant ? fmt::format("did you mean \"{}\"?", *meant) : "hotfixctl --help lists all"));
}

int runCommand(const Command& command, const std::vector<std::string>& arguments, Output& out) {
  const auto line = readCommandLine(command, arguments);
  if (const auto* help = std::get_if<HelpWanted>(&line)) return answer(help->text, out);
  if (const auto* lack = std::get_if<Misunderstood>(&line)) return refuse(lack->reason);
  const auto& order = std::get<Order>(line);
  Surroundings surroundings{out, Style::chosenBy(order.color), order.json};
  return order.action(surroundings);
}

int run(const std::vector<std::string>& arguments, std::span<const Command> commands, Output& out) {
  if (arguments.size() < 2) return refuse("a command is missing; hotfixctl --help lists all");
  const std::string& name = arguments[1];
  const bool wantsHelp = name == "-h" || name == kHelp;
  const bool wantsVersion = name == kVersionOption;
  if ((wantsHelp || wantsVersion) && arguments.size() > 2)
    return refuse(fmt::format("\"{}\" is one argument too many for {}", arguments[2], name));
  if (wantsHelp) return answer(helpOf(commands, Style::chosenBy("auto")), out);
  if (wantsVersion) return answer(fmt::format("hotfixctl {}\n", kVersion), out);
  if (name == "--complete")
    return answer(textOf(choicesFor({arguments.begin() + 2, arguments.end()}, commands)), out);
  const auto* const command = std::find_if(commands.data(), commands.data() + commands.size(),
                                           [&](const Command& one) { return one.name == name; });
  if (command == commands.data() + commands.size()) return refuseCommand(name, commands);
  return runCommand(*command, {arguments.begin() + 2, arguments.end()}, out);
}

int runWithoutLack(const std::vector<std::string>& arguments, std::span<const Command> commands,
                   Output& out) {
  try {
    return run(arguments, commands, out);
  } catch (const std::bad_alloc&) {
    complain("there is not enough memory");
  } catch (const xml::LibraryLack& lack) {
    complain(lack.what());
  }
  return kInternalError;
}

}  // namespace

int runProgram(const std::vector<std::string>& arguments, std::span<const Command> commands,
               Output& out) {
  const int status = runWithoutLack(arguments, commands, out);
  out.flush();
  if (!out.failure()) return status;
  complain(fmt::format("the answer cannot be written: {}", *out.failure()));
  return kOutputError;
}

}  // namespace installer::ctl
