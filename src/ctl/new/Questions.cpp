#include "ctl/new/Questions.h"

#include <iostream>
#include <optional>
#include <string>
#include <string_view>

namespace installer::ctl::package {

namespace {

// Without the blanks around it, which nobody sees who types. nullopt at the end of input.
std::optional<std::string> answerTo(std::string_view question, Surroundings& surroundings) {
  surroundings.out.write(surroundings.style.strong(question) + ": ");
  surroundings.out.flush();
  std::string line;
  if (surroundings.out.failure() || !std::getline(std::cin, line)) return std::nullopt;
  const std::size_t first = line.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  return line.substr(first, line.find_last_not_of(" \t") - first + 1);
}

bool ask(const Need& need, Options& options, Surroundings& surroundings) {
  while (!need.isMet(options)) {
    const auto answer = answerTo(need.question, surroundings);
    if (!answer) return false;
    if (!answer->empty()) need.answer(options, *answer);
  }
  return true;
}

bool askWhether(std::string_view question, std::optional<std::string>& option,
                Surroundings& surroundings) {
  if (option) return true;
  const auto answer = answerTo(question, surroundings);
  if (answer && !answer->empty()) option = *answer;
  return answer.has_value();
}

}  // namespace

bool askForMissing(Options& options, Surroundings& surroundings) {
  for (const Need* need : missing(options))
    if (!ask(*need, options, surroundings)) return false;
  return askWhether("File of settings, in UTF-8 (empty for none)", options.customization,
                    surroundings) &&
         askWhether("Folder of extra files (empty for none)", options.extras, surroundings);
}

}  // namespace installer::ctl::package
