#include "ctl/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "ctl/Help.h"
#include "ctl/Nearest.h"
#include "ctl/Style.h"

namespace installer::ctl {

namespace {

std::vector<std::string> optionsOf(const CLI::App& line) {
  std::vector<std::string> names;
  for (const CLI::Option* option : line.get_options())
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  return names;
}

// The reader takes texts in brackets for lists. One that begins with something else is none, and no
// argument can hold this byte by itself.
constexpr char kMark = '\0';

// The one option that the installer itself has, with one dash.
constexpr std::string_view kInstallersOption = "-rcpdata";

// How the name of a check by oneOf() begins; its words follow.
constexpr std::string_view kOneOf = "one of ";

std::string withMark(const std::string& argument) {
  return argument.starts_with('[') ? kMark + argument : argument;
}

std::string withoutMark(const std::string& text) {
  return text.starts_with(kMark) ? text.substr(1) : text;
}

// What stands behind it are no options, however they look.
constexpr std::string_view kEndOfOptions = "--";

bool isOption(const std::string& argument, const std::vector<std::string>& arguments) {
  const auto end = std::find(arguments.begin(), arguments.end(), kEndOfOptions);
  return argument.starts_with('-') && std::find(arguments.begin(), end, argument) != end;
}

// Every value is taken as it stands, before anything looks at it.
void takeMarksOff(CLI::App& line) {
  for (CLI::Option* option : line.get_options())
    if (option->get_items_expected_max() > 0) option->transform(withoutMark);
}

// What the reader takes: the last argument first.
std::vector<std::string> prepared(const CLI::App& line, const std::vector<std::string>& arguments) {
  std::vector<std::string> turned;
  const std::string longForm = fmt::format("-{}", kInstallersOption);
  const bool hasInstallersOption = line.get_option_no_throw(longForm) != nullptr;
  const auto end = std::find(arguments.begin(), arguments.end(), kEndOfOptions);
  for (auto each = arguments.begin(); each != arguments.end(); ++each) {
    const bool isInstallers = hasInstallersOption && each < end && *each == kInstallersOption;
    turned.push_back(isInstallers ? longForm : withMark(*each));
  }
  std::reverse(turned.begin(), turned.end());
  return turned;
}

// The names of the checks that the option's value has to pass.
std::vector<std::string> checksOf(CLI::Option& option) {
  std::vector<std::string> names;
  try {
    for (int index = 0;; ++index) names.push_back(option.get_validator(index)->get_name());
  } catch (const CLI::OptionNotFound&) {
    return names;  // the library tells no count
  }
}

// The first argument that the command has no use for.
std::string refusalOf(const CLI::App& line, const std::string& name,
                      const std::vector<std::string>& arguments) {
  for (const std::string& argument : line.remaining()) {
    if (!isOption(argument, arguments)) continue;
    const std::string option = argument.substr(0, argument.find('='));
    const auto meant = option.starts_with("--") ? nearest(option, optionsOf(line)) : std::nullopt;
    return fmt::format("{} has no option \"{}\"{}", name, option,
                       meant ? fmt::format("; did you mean \"{}\"?", *meant) : "");
  }
  std::vector<std::string> left = line.remaining();
  if (left.size() > 1 && left.front() == kEndOfOptions) left.erase(left.begin());
  const std::string first = withoutMark(left.front());
  return fmt::format("\"{}\" is one argument too many for {}", first, name);
}

}  // namespace

CLI::Option* addText(CLI::App& line, const std::string& name, std::optional<std::string>& text,
                     const std::string& description) {
  return line.add_option(name, text, description);
}

CLI::Option* addTexts(CLI::App& line, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description) {
  return line.add_option(name, texts, description);
}

std::string whyNoText(const std::string& text) {
  return text.empty() ? "the text is empty" : "";
}

CLI::Validator oneOf(const std::vector<std::string>& words) {
  // A description would stand in the help, behind the value's name.
  return CLI::IsMember(words).description("").name(
      fmt::format("{}{}", kOneOf, fmt::join(words, " ")));
}

std::vector<std::string> wordsOf(CLI::Option& option) {
  for (const std::string& check : checksOf(option))
    if (check.starts_with(kOneOf)) return CLI::detail::split(check.substr(kOneOf.size()), ' ');
  return {};
}

std::string lineWord(const std::string& argument) {
  return argument == kInstallersOption ? "-" + argument : argument;
}

void declareLine(const Command& command, CLI::App& line, Order& order) {
  line.name(std::string(command.name));
  line.set_help_flag("-h,--help", "tells all this");
  line.add_flag("--json", order.json, "answers for programs, as JSON");
  line.add_option("--color", order.color, "whether the answer has colours: auto, always or never")
      ->type_name("WHEN")
      ->check(oneOf({"auto", "always", "never"}));
  order.action = command.declare(line);
}

std::variant<HelpWanted, Misunderstood, Order> readCommandLine(
    const Command& command, const std::vector<std::string>& arguments) {
  const std::string name(command.name);
  CLI::App line;
  Order order;
  declareLine(command, line, order);
  takeMarksOff(line);
  try {
    line.parse(prepared(line, arguments));
    return order;
  } catch (const CLI::CallForHelp&) {
    return HelpWanted{helpOf(command, line, Style::chosenBy(order.color))};
  } catch (const CLI::ExtrasError&) {
    return Misunderstood{refusalOf(line, name, arguments)};
  } catch (const CLI::ParseError& error) {
    return Misunderstood{fmt::format("{}: {}", name, error.what())};
  }
}

}  // namespace installer::ctl
