#include "Files.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>

namespace sample {

namespace fs = std::filesystem;

namespace {

std::string trimmed(const std::string& text) {
  const char* const kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Where the key of a properties line ends: its first "=" or ":" without a backslash before it.
std::size_t separatorOf(const std::string& line) {
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == '\\') {
      ++at;
    } else if (line[at] == '=' || line[at] == ':') {
      return at;
    }
  }
  return std::string::npos;
}

std::string withoutEscapes(const std::string& text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\\' && at + 1 < text.size()) ++at;
    plain += text[at];
  }
  return plain;
}

}  // namespace

std::optional<std::string> readFile(const fs::path& file) {
  std::error_code error;
  if (!fs::is_regular_file(file, error)) return std::nullopt;
  std::ifstream in(file, std::ios::binary);
  if (!in) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool writeFile(const fs::path& file, const std::string& content) {
  const fs::path temporary = file.parent_path() / (".new-" + file.filename().string());
  std::error_code error;
  fs::remove(temporary, error);
  std::ofstream out(temporary, std::ios::binary);
  out << content;
  out.close();
  if (!out) return false;
  fs::rename(temporary, file, error);
  return !error;
}

std::vector<std::string> namesIn(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    names.push_back(at->path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<std::string> readProperty(const fs::path& file, const std::string& key) {
  std::optional<std::string> value;
  std::istringstream lines(readFile(file).value_or(""));
  for (std::string line; std::getline(lines, line);) {
    line = trimmed(line);
    const std::size_t separator = separatorOf(line);
    if (line.starts_with('#') || line.starts_with('!') || separator == std::string::npos) continue;
    if (withoutEscapes(trimmed(line.substr(0, separator))) != key) continue;
    value = withoutEscapes(trimmed(line.substr(separator + 1)));
  }
  return value;
}

bool isPlainName(const std::string& text) {
  const bool onlyDots = text.find_first_not_of('.') == std::string::npos;
  return !onlyDots && std::all_of(text.begin(), text.end(), [](unsigned char one) {
    return std::isalnum(one) || one == '.' || one == '-' || one == '_';
  });
}

std::string digestOf(const std::string& content) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char one : content) {
    hash ^= static_cast<unsigned char>(one);
    hash *= 0x100000001b3U;
  }
  std::ostringstream text;
  text << std::hex << std::setw(16) << std::setfill('0') << hash;
  return text.str();
}

}  // namespace sample
