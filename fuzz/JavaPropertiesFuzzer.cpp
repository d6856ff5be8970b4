// Any text is read as the model reads it, and written as the model writes it. What the dialect can
// tell comes back.

#include <algorithm>

#include "Fuzzed.h"
#include "formats/JavaPropertiesReader.h"
#include "formats/JavaPropertiesWriter.h"
#include "hotfix/util/StringUtil.h"
#include "support/models/PropertiesReaderModel.h"
#include "support/models/PropertiesWriterModel.h"

namespace installer::fuzz {

namespace {

// The model searches its entries from the beginning: for longer texts it takes too long.
constexpr std::size_t kLongestModelled = 2048;

TextDictionary read(std::string_view text) {
  TextDictionary entries;
  readJavaProperties(std::string(text), entries);
  return entries;
}

bool isPlain(std::string_view key) {
  return std::ranges::all_of(key, [](char c) { return c > ' ' && c <= '~' && c != '\\'; }) &&
         !key.starts_with("-X");
}

// Whether neither the value's beginning counts as a separator nor its end as a continuation, and no
// backslash in it could be one of an escape's.
bool isTold(std::string_view value) {
  return !value.empty() && value.find('\\') == std::string_view::npos &&
         std::string_view("=: ").find(value.front()) == std::string_view::npos &&
         value.back() != ' ';
}

void compareWithModel(const TextDictionary& entries, std::string_view input,
                      const std::string& written) {
  const model::Entries expected = model::readProperties(std::string(input));
  const bool isEqual = std::equal(
      entries.begin(), entries.end(), expected.begin(), expected.end(),
      [](const auto& a, const auto& b) { return a.key == b.first && a.value == b.second; });
  require(isEqual, "the entries are the model's");
  require(written == model::writtenProperties(expected), "the text is the model's");
}

void readAgain(const TextDictionary& entries, const std::string& written) {
  const TextDictionary again = read(written);
  for (const auto& [key, value] : entries) {
    if (key.empty() || !isPlain(key) || !isTold(value)) continue;
    const auto found = again.find(key);
    require(found.has_value(), "the key comes back");
    require(StringUtil::convertUnicode2Characters(std::string(*found)) == value,
            "the value comes back");
  }
}

}  // namespace

void tryInput(std::string_view input) {
  const TextDictionary entries = read(input);
  const std::string written = writeJavaProperties(entries);
  if (input.size() <= kLongestModelled) compareWithModel(entries, input, written);
  // Without backslashes in keys no two of them become the same.
  const bool areKeysApart = std::ranges::none_of(
      entries, [](const auto& entry) { return entry.key.find('\\') != std::string_view::npos; });
  if (areKeysApart) readAgain(entries, written);
}

}  // namespace installer::fuzz
