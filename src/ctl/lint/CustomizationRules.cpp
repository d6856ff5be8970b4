#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "base/Characters.h"
#include "base/TextDictionary.h"
#include "ctl/lint/Files.h"
#include "ctl/lint/JavaLine.h"
#include "ctl/lint/RuleTable.h"
#include "ctl/lint/Rules.h"
#include "formats/JavaPropertiesReader.h"
#include "formats/JavaPropertiesWriter.h"
#include "hotfix/base/KeyedHash.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"

namespace installer::ctl::lint {

namespace {

constexpr std::size_t kMostLines = 100'000;
constexpr std::size_t kLongestLine = std::size_t{1} << 20;  // bytes
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kSeparators = "=: \t";
constexpr std::string_view kOptionPrefix = "-X";

// --- The file as a whole -------------------------------------------------------------------------

bool isWide(std::string_view bytes) {
  return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF") ||
         bytes.find('\0') != std::string_view::npos;
}

// Whether the line has letters beyond ASCII, all of them in UTF-8.
bool holdsUtf8Letters(std::string_view line) {
  if (line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
  bool any = false;
  for (std::size_t at = 0; at < line.size();) {
    const auto character = decodeUtf8(line, at);
    if (!character) return false;
    any = any || character->length > 1;
    at += character->length;
  }
  return any;
}

bool endsLinesWithReturns(std::string_view bytes) {
  while (bytes.ends_with('\r')) bytes.remove_suffix(1);
  return bytes.find('\n') == std::string_view::npos && bytes.find('\r') != std::string_view::npos;
}

void lintEncoding(const std::string& file, std::string_view bytes, Findings& findings) {
  if (bytes.starts_with(kByteOrderMark))
    findings.add(rule("HF402"), {file, std::nullopt, 1},
                 "A byte order mark becomes a part of the first key.");
  if (endsLinesWithReturns(bytes))
    findings.add(rule("HF413"), placeOf(file), "The file is one line: carriage returns end none.");
}

// --- One line ------------------------------------------------------------------------------------

// The backslashes at the end of the line.
std::size_t backslashesAtEnd(std::string_view line) {
  const std::size_t last = line.find_last_not_of('\\');
  return last == std::string_view::npos ? line.size() : line.size() - last - 1;
}

// The line that a merge makes of it.
std::string writtenLine(const TextDictionary& entries) {
  std::string text = writeJavaProperties(entries);
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

// Goes through the lines, as the installer's reader does.
class Settings {
 public:
  Settings(std::string file, Findings& findings) : _file(std::move(file)), _findings(findings) {}

  void look(std::string_view bytes);

 private:
  void lookAtLine(std::string_view line);
  void lookAtEntry(std::string_view line, const TextDictionary::Entry& entry);
  void lookAtMeaning(std::string_view line, const TextDictionary& entries);
  void summarize();
  void add(const Rule& rule, std::string message) {
    _findings.add(rule, {_file, std::nullopt, _number}, std::move(message));
  }

  const std::string _file;
  Findings& _findings;
  std::size_t _number = 0;  // of the line
  std::size_t _comments = 0;
  std::size_t _entries = 0;
  bool _continues = false;  // whether the line before this one ends as a continued one
  std::unordered_set<std::string, KeyedHash> _keys;
};

void Settings::look(std::string_view bytes) {
  while (!bytes.empty() && _number < kMostLines) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    ++_number;
    lookAtLine(bytes.substr(0, end));
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  if (!bytes.empty())
    _findings.add(
        rule("HF608"), placeOf(_file),
        fmt::format("There are more than {} lines; only those are looked at.", kMostLines));
  summarize();
}

void Settings::summarize() {
  if (_comments > 0)
    _findings.add(rule("HF408"), placeOf(_file),
                  fmt::format("A merge drops the comments, {} lines.", _comments));
  if (_entries == 0 && _number < kMostLines)
    _findings.add(rule("HF414"), placeOf(_file), "The file sets nothing.");
}

void Settings::lookAtLine(std::string_view line) {
  if (line.size() > kLongestLine) {
    ++_entries;
    return add(rule("HF608"), fmt::format("The line is longer than {} bytes.", kLongestLine));
  }
  TextDictionary entries;
  readJavaProperties(std::string(line), entries);
  const std::string_view trimmed = trimmedLine(line);
  if (trimmed.starts_with('#')) ++_comments;
  if (trimmed.starts_with('#') || trimmed.empty()) return;
  if (holdsUtf8Letters(line)) add(rule("HF403"), "Letters in UTF-8 are each read as several.");
  if (std::exchange(_continues, trimmed.ends_with(" \\"))) return;
  if (_continues)
    return add(rule("HF406"),
               fmt::format("\"{}\" is continued, and dropped with its key.", trimmed));
  ++_entries;
  lookAtEntry(trimmed, *entries.begin());
  if (backslashesAtEnd(trimmed) % 2 == 1)
    return add(rule("HF407"),
               fmt::format("\"{}\" ends with a backslash and is not continued.", trimmed));
  const bool isOdd = entries.begin()->key.empty() || trimmed.starts_with('!') ||
                     trimmed.starts_with(kOptionPrefix);  // which other rules tell
  if (!isOdd) lookAtMeaning(trimmed, entries);
}

void Settings::lookAtEntry(std::string_view line, const TextDictionary::Entry& entry) {
  if (entry.key.empty()) return add(rule("HF412"), fmt::format("\"{}\" has no key.", line));
  if (line.starts_with('!')) add(rule("HF409"), fmt::format("\"{}\" is no comment.", line));
  if (line.starts_with(kOptionPrefix))
    add(rule("HF416"),
        fmt::format("\"{}\" counts as an option: its value is \"{}\".", line, entry.value));
  if (line.find_first_of(kSeparators) == std::string_view::npos)
    add(rule("HF404"), fmt::format("\"{}\" becomes a key without a value.", line));
  if (!_keys.insert(std::string(entry.key)).second)
    add(rule("HF405"), fmt::format("\"{}\" stands more than once.", entry.key));
}

// Whether the platform reads from what a merge writes what it would read from the line itself.
void Settings::lookAtMeaning(std::string_view line, const TextDictionary& entries) {
  const auto meant = javaEntryIn(line);
  const auto merged = javaEntryIn(writtenLine(entries));
  if (!meant || !merged)
    return add(rule("HF417"),
               fmt::format("Of \"{}\" comes a \\u without four digits behind it.", line));
  if (meant->key != merged->key)
    return add(rule("HF410"), fmt::format("The key of \"{}\" is changed by a merge.", line));
  if (meant->value != merged->value)
    add(rule("HF411"), fmt::format("The value of \"{}\" is changed by a merge.", line));
}

void lintFile(const std::string& file, Findings& findings) {
  FileError error;
  const auto bytes = Platform::current().files->read(file, &error);
  if (!bytes) return findings.add(rule("HF415"), placeOf(file), error.description);
  if (isWide(*bytes))
    return findings.add(rule("HF401"), placeOf(file),
                        "The file holds zero bytes or a mark of UTF-16.");
  lintEncoding(file, *bytes, findings);
  Settings(file, findings).look(*bytes);
}

}  // namespace

void lintCustomization(const PackageView& package, Findings& findings) {
  const std::string& file = package.resolved.locations.customization;
  if (isFile(file) && hasContent(package, file)) lintFile(file, findings);
}

}  // namespace installer::ctl::lint
