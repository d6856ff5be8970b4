#include "ctl/Help.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <string_view>
#include <vector>

#include "ctl/Shown.h"
#include "ctl/Style.h"

namespace installer::ctl {

namespace {

// Where meanings begin.
constexpr std::size_t kMeanings = 26;
constexpr std::size_t kMeaningsOfStatuses = 6;

class Page {
 public:
  explicit Page(const Style& style) : _style(style) {}

  void heading(std::string_view text) { _text += "\n" + _style.strong(text) + "\n"; }
  void paragraphs(std::string_view text) { _text += broken(text, {_style.textWidth(), 0}); }
  void usage(std::string_view text) {
    _text += broken(text, {_style.textWidth(), 4}, "Usage: ") + "\n";
  }
  void explained(std::string_view term, std::string_view meaning, std::size_t column) {
    _text += entry(fmt::format("  {}", term), meaning, {_style.textWidth(), column});
  }

  std::string taken() { return std::move(_text); }

 private:
  const Style& _style;
  std::string _text;
};

// "-h, --help", "--color WHEN", "<instance>..."
std::string termOf(const CLI::Option& option) {
  if (option.get_positional())
    return fmt::format("<{}>{}", option.get_single_name(),
                       option.get_items_expected_max() > 1 ? "..." : "");
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  if (option.get_items_expected_max() > 0) names.back() += " " + option.get_type_name();
  return fmt::format("{}", fmt::join(names, ", "));
}

std::string usageOf(const Command& command, const CLI::App& line) {
  std::string usage = fmt::format("hotfixctl {} [<option>...]", command.name);
  for (const CLI::Option* option : line.get_options()) {
    if (!option->get_positional()) continue;
    const std::string term = termOf(*option);
    usage += option->get_required() ? " " + term : " [" + term + "]";
  }
  return usage;
}

void addOptions(Page& page, const CLI::App& line, bool positional) {
  for (const CLI::Option* option : line.get_options())
    if (option->get_positional() == positional)
      page.explained(termOf(*option), option->get_description(), kMeanings);
}

bool hasArguments(const CLI::App& line) {
  return !line.get_options([](const CLI::Option* option) { return option->get_positional(); })
              .empty();
}

void addStatuses(Page& page, std::span<const ExitStatus> statuses) {
  for (const ExitStatus& status : statuses)
    page.explained(fmt::to_string(status.number), status.meaning, kMeaningsOfStatuses);
}

}  // namespace

std::string helpOf(std::span<const Command> commands, const Style& style) {
  Page page(style);
  page.usage("hotfixctl <command> [<option>...] [<argument>...]");
  page.paragraphs(
      "For the people who make, roll out and support hotfixes. What it tells comes from the "
      "installer's own code; it changes nothing unless a command says so.");
  page.heading("Commands");
  for (const Command& command : commands) page.explained(command.name, command.summary, kMeanings);
  page.heading("Options");
  page.explained("-h, --help", "tells all this; behind a command, all about that command",
                 kMeanings);
  page.explained("--version", "tells the version", kMeanings);
  page.heading("Exit status");
  page.paragraphs("Each command's own are in its help. All have these:");
  addStatuses(page, kCommonStatuses);
  return page.taken();
}

std::string helpOf(const Command& command, const CLI::App& line, const Style& style) {
  Page page(style);
  page.usage(usageOf(command, line));
  page.paragraphs(command.description);
  if (hasArguments(line)) {
    page.heading("Arguments");
    addOptions(page, line, true);
  }
  page.heading("Options");
  addOptions(page, line, false);
  page.heading("Exit status");
  addStatuses(page, command.statuses);
  addStatuses(page, kCommonStatuses);
  return page.taken();
}

}  // namespace installer::ctl
