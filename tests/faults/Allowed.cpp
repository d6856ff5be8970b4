#include "faults/Allowed.h"

#include <fmt/format.h>

#include <sstream>

#include "cli/Fixtures.h"
#include "faults/Normal.h"
#include "support/ListText.h"
#include "support/linux/PrivateRoot.h"

namespace installer::faults {

namespace {

using Entries = std::map<std::string, std::string>;

constexpr std::size_t kShown = 200;  // bytes of a content in a line for people

// These have rules of their own.
bool isReport(const std::string& path) {
  return path == cli::kTrace || path == cli::kPasteboard || path == cli::kMarker;
}

std::string shown(const std::string& content) {
  std::string text;
  for (const char character : content.substr(0, kShown))
    text += character == '\n' ? std::string("\\n") : std::string(1, character);
  return '"' + text + (content.size() > kShown ? "\"..." : "\"");
}

std::optional<Entries> linesOf(const std::string& content) {
  Entries entries;
  if (!content.empty() && content.back() != '\n') return std::nullopt;
  std::istringstream stream(content);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with('#')) continue;
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) return std::nullopt;
    entries[line.substr(0, equals)] = line.substr(equals + 1);
  }
  return entries;
}

std::optional<Entries> listEntriesOf(const std::string& content) {
  const auto list = test::readXmlList(content);
  if (!list || list->kind != "dict") return std::nullopt;
  Entries entries;
  for (const auto& [key, value] : list->items) entries[key] = value.kind + " " + value.text;
  return entries;
}

// The user's own group stands in where the group of administrators can not be found.
bool isGroupOf(gid_t group, const std::set<gid_t>& known) {
  return group == 0 || known.contains(group) ||
         (group == test::kAlice && known.contains(test::kAdmin));
}

}  // namespace

std::optional<Entries> entriesOf(const std::string& path, const std::string& content) {
  if (path.ends_with(".properties") || path.ends_with(".ini")) return linesOf(content);
  if (path.ends_with(".plist") || path == cli::kConfiguration) return listEntriesOf(content);
  return std::nullopt;
}

void Allowed::learn(const Files& files) {
  ++_moments;
  for (const auto& [path, entry] : files) {
    if (isTemporary(path) || isReport(path)) continue;
    States& states = _paths[path];
    ++states.times;
    states.kinds.insert(entry.kind);
    states.modes.insert(entry.mode);
    states.owners.insert(entry.owner);
    states.groups.insert(entry.group);
    states.contents.insert(entry.content);
    if (entry.kind == "file") learnEntries(path, entry.content, states);
  }
}

void Allowed::learnEntries(const std::string& path, const std::string& content, States& states) {
  const auto entries = entriesOf(path, content);
  if (!entries) return;
  for (const auto& [key, value] : *entries) {
    states.values[key].insert(value);
    ++states.keyTimes[key];
  }
}

std::optional<std::string> Allowed::foreignContent(const std::string& path,
                                                   const std::string& content,
                                                   const States& states) {
  if (states.contents.contains(content)) return std::nullopt;
  const auto entries = entriesOf(path, content);
  if (!entries) return "is " + shown(content);
  for (const auto& [key, value] : *entries) {
    const auto known = states.values.find(key);
    if (known == states.values.end()) return "holds the key " + key + "=" + value;
    if (!known->second.contains(value)) return fmt::format("holds {} = {}", key, shown(value));
  }
  for (const auto& [key, times] : states.keyTimes)
    if (times == states.times && !entries->contains(key)) return "lacks the key " + key;
  return std::nullopt;
}

std::vector<Violation> Allowed::against(const Files& files) const {
  std::vector<Violation> found;
  for (const auto& [path, entry] : files) {
    if (isTemporary(path) || isReport(path)) continue;
    const auto known = _paths.find(path);
    if (known == _paths.end()) {
      found.push_back({"appeared", fmt::format("{} {}", path, shown(entry.content))});
      continue;
    }
    const States& states = known->second;
    const auto foreign = states.kinds.contains(entry.kind)
                             ? foreignContent(path, entry.content, states)
                             : "is a " + entry.kind;
    if (foreign) found.push_back({"content", path + " " + *foreign});
    if (!states.modes.contains(entry.mode))
      found.push_back({"attributes", fmt::format("{} has mode {:o}", path, entry.mode)});
    if ((entry.owner != 0 && !states.owners.contains(entry.owner)) ||
        !isGroupOf(entry.group, states.groups))
      found.push_back({"attributes", fmt::format("{} is {}:{}'s", path, entry.owner, entry.group)});
  }
  for (const auto& [path, states] : _paths)
    if (states.times == _moments && !files.contains(path)) found.push_back({"missing", path});
  return found;
}

}  // namespace installer::faults
