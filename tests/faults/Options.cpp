#include "faults/Options.h"

#include <charconv>
#include <sstream>

namespace installer::faults {

namespace {

std::vector<std::string> namesIn(const std::string& text) {
  std::vector<std::string> names;
  std::istringstream stream(text);
  for (std::string name; std::getline(stream, name, ',');) names.push_back(name);
  return names;
}

template <class Number>
bool readNumber(const std::string& text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

// "7" means that call alone, "7-" all from it on.
bool readRange(const std::string& text, Options& options) {
  const std::size_t dash = text.find('-');
  if (!readNumber(text.substr(0, dash), options.first)) return false;
  if (dash == std::string::npos) options.last = options.first;
  if (dash == std::string::npos || dash + 1 == text.size()) return true;
  return readNumber(text.substr(dash + 1), options.last);
}

bool readPart(const std::string& text, Options& options) {
  const std::size_t slash = text.find('/');
  return slash != std::string::npos && readNumber(text.substr(0, slash), options.part) &&
         readNumber(text.substr(slash + 1), options.parts) && options.part > 0 &&
         options.part <= options.parts;
}

bool readFlag(const std::string& name, Options& options) {
  if (name == "--list") return options.list = true;
  if (name == "--verbose") return options.verbose = true;
  return false;
}

bool readValue(const std::string& name, const std::string& value, Options& options) {
  if (name == "--range") return readRange(value, options);
  if (name == "--part") return readPart(value, options);
  if (name == "--sample") return readNumber(value, options.sample);
  if (name == "--seed") return readNumber(value, options.seed);
  if (name == "--scenario") {
    options.scenarios = namesIn(value);
  } else if (name == "--kind") {
    options.kinds = namesIn(value);
  } else if (name == "--without") {
    options.without = namesIn(value);
  } else if (name == "--resume") {
    options.state = value;
  } else if (name == "--program") {
    options.program = value;
  } else {
    return false;
  }
  return true;
}

}  // namespace

std::optional<Options> optionsFrom(const std::vector<std::string>& arguments) {
  Options options;
  options.program = HOTFIX_PROGRAM;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (readFlag(arguments[i], options)) continue;
    if (i + 1 == arguments.size()) return std::nullopt;
    if (!readValue(arguments[i], arguments[i + 1], options)) return std::nullopt;
    ++i;
  }
  return options;
}

}  // namespace installer::faults
