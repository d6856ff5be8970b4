#include "ctl/Completion.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>

#include "ctl/CommandLine.h"
#include "ctl/lint/RuleTable.h"

namespace installer::ctl {

namespace {

using Words = std::vector<Choice>;

Words rules() {
  Words words;
  for (const lint::Rule& rule : lint::kRules)
    words.push_back({std::string(rule.id), std::string(rule.sentence)});
  return words;
}

Choices nothing() {
  return {};
}

// By the names that values have in helps. A number or a name of somebody else's cannot be offered.
Choices valuesNamed(const std::string& name) {
  if (name == "rule" || name == "rules") return {NextWord::oneOfThese, rules()};
  constexpr std::string_view kFolders[] = {"package", "destination", "instance",
                                           "bundle",  "folder",      "place"};
  if (std::find(std::begin(kFolders), std::end(kFolders), name) != std::end(kFolders))
    return {NextWord::folder, {}};
  constexpr std::string_view kFiles[] = {"file", "program", "trace"};
  if (std::find(std::begin(kFiles), std::end(kFiles), name) != std::end(kFiles))
    return {NextWord::file, {}};
  return nothing();
}

std::string nameOfValue(const CLI::Option& option) {
  std::string name = option.get_positional() ? option.get_single_name() : option.get_type_name();
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return name;
}

Choices valuesOf(CLI::Option& option) {
  const std::vector<std::string> words = wordsOf(option);
  if (words.empty()) return valuesNamed(nameOfValue(option));
  Choices choices;
  for (const std::string& word : words) choices.words.push_back({word, ""});
  return choices;
}

// The values behind what is written before them in the same word: "--color=", "HF101,".
Choices behind(const std::string& lead, Choices choices) {
  for (Choice& choice : choices.words) choice.word.insert(0, lead);
  return choices;
}

// A list's elements stand behind commas.
Choices valuesOf(CLI::Option& option, const std::string& begun) {
  const bool isList = nameOfValue(option) == "rules";
  const std::size_t comma = isList ? begun.rfind(',') : std::string::npos;
  const std::string before = comma == std::string::npos ? "" : begun.substr(0, comma + 1);
  return behind(before, valuesOf(option));
}

bool takesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

// Follows the words of one command, up to the one that is being written.
class Walk {
 public:
  explicit Walk(CLI::App& line) : _line(line) {}

  void pass(const std::string& word) {
    if (_awaiting != nullptr) {
      _awaiting = nullptr;
    } else if (isOption(word)) {
      passOption(word);
    } else if (word == "--" && !_onlyArguments) {
      _onlyArguments = true;
    } else {
      ++_arguments;
    }
  }

  Choices next(const std::string& begun) const {
    if (_awaiting != nullptr) return valuesOf(*_awaiting, begun);
    const std::size_t equals = begun.find('=');
    if (isOption(begun) && equals != std::string::npos) return valueBehind(begun, equals);
    if (begun.starts_with('-') && !_onlyArguments) return options();
    return argument();
  }

 private:
  bool isOption(const std::string& word) const {
    return word.size() > 1 && word.starts_with('-') && word != "--" && !_onlyArguments;
  }

  CLI::Option* optionNamed(const std::string& word) const {
    const std::string name = word.substr(0, word.find('='));
    return _line.get_option_no_throw(lineWord(name));
  }

  void passOption(const std::string& word) {
    CLI::Option* const option = optionNamed(word);
    if (option == nullptr) return;
    _given.insert(option);
    if (takesValue(*option) && word.find('=') == std::string::npos) _awaiting = option;
  }

  Choices valueBehind(const std::string& begun, std::size_t equals) const {
    CLI::Option* const option = optionNamed(begun);
    if (option == nullptr || !takesValue(*option)) return nothing();
    return behind(begun.substr(0, equals + 1), valuesOf(*option, begun.substr(equals + 1)));
  }

  // What can be said once is offered once.
  Choices options() const {
    Choices choices;
    for (CLI::Option* option : _line.get_options()) {
      const bool isOver = _given.contains(option) && option->get_items_expected_max() <= 1;
      if (option->get_positional() || isOver) continue;
      for (const std::string& name : option->get_lnames())
        choices.words.push_back({"--" + name, option->get_description()});
    }
    return choices;
  }

  // The last argument can stand for many.
  Choices argument() const {
    std::size_t left = _arguments;
    for (CLI::Option* option : _line.get_options()) {
      if (!option->get_positional()) continue;
      if (left == 0 || option->get_items_expected_max() > 1) return valuesOf(*option);
      --left;
    }
    return nothing();
  }

  CLI::App& _line;
  CLI::Option* _awaiting = nullptr;  // the option whose value comes next
  std::set<const CLI::Option*> _given;
  std::size_t _arguments = 0;
  bool _onlyArguments = false;  // behind "--"
};

Choices choicesOfProgram(const std::string& begun, std::span<const Command> commands) {
  if (begun.starts_with('-'))
    return {NextWord::oneOfThese,
            {{"--help", "tells all commands"}, {"--version", "tells the version"}}};
  Choices choices;
  for (const Command& command : commands)
    choices.words.push_back({std::string(command.name), std::string(command.summary)});
  return choices;
}

Choices choicesOfCommand(const std::vector<std::string>& words, const Command& command) {
  CLI::App line;
  Order order;
  declareLine(command, line, order);
  Walk walk(line);
  for (std::size_t at = 1; at + 1 < words.size(); ++at) walk.pass(words[at]);
  return walk.next(words.back());
}

std::string_view nameOf(NextWord kind) {
  switch (kind) {
    case NextWord::oneOfThese:
      return "words";
    case NextWord::file:
      return "files";
    case NextWord::folder:
      return "folders";
  }
  return "";
}

}  // namespace

Choices choicesFor(const std::vector<std::string>& words, std::span<const Command> commands) {
  if (words.size() < 2) return choicesOfProgram(words.empty() ? "" : words.front(), commands);
  for (const Command& command : commands)
    if (command.name == words.front()) return choicesOfCommand(words, command);
  return nothing();
}

std::string textOf(const Choices& choices) {
  std::string text = fmt::format("{}\n", nameOf(choices.kind));
  for (const Choice& choice : choices.words)
    text += fmt::format("{}\t{}\n", choice.word, choice.meaning);
  return text;
}

}  // namespace installer::ctl
