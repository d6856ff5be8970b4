#include "faults/Normal.h"

#include <algorithm>
#include <cctype>
#include <ctime>
#include <string_view>

namespace installer::faults {

namespace {

constexpr std::size_t kDigits = 10;  // DDMMYYhhmm
constexpr std::time_t kMinute = 60;

bool isDigit(char character) {
  return std::isdigit(static_cast<unsigned char>(character)) != 0;
}

std::string stampOf(std::time_t time) {
  std::tm parts{};
  gmtime_r(&time, &parts);
  char text[kDigits + 1];
  std::strftime(text, sizeof text, "%d%m%y%H%M", &parts);
  return text;
}

bool isStampOfThisProcess(const std::string& digits) {
  static const std::time_t start = std::time(nullptr) - kMinute;
  for (std::time_t time = std::time(nullptr) + kMinute; time >= start; time -= kMinute)
    if (digits == stampOf(time)) return true;
  return false;
}

}  // namespace

std::string withoutStamps(const std::string& text) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const auto end = std::find_if_not(text.begin() + static_cast<long>(at), text.end(), isDigit);
    const auto length = static_cast<std::size_t>(end - text.begin()) - at;
    if (length == kDigits && isStampOfThisProcess(text.substr(at, length)))
      result += "STAMP";
    else
      result += text.substr(at, std::max<std::size_t>(length, 1));
    at += std::max<std::size_t>(length, 1);
  }
  return result;
}

Files withoutStamps(const Files& files) {
  Files result;
  for (const auto& [path, entry] : files) {
    test::TreeEntry written = entry;
    written.content = withoutStamps(entry.content);
    result.emplace(withoutStamps(path), std::move(written));
  }
  return result;
}

bool isTemporary(const std::string& path) {
  constexpr std::string_view kPrefix = "/.hotfix-";
  for (auto at = path.find(kPrefix); at != std::string::npos; at = path.find(kPrefix, at + 1)) {
    const auto number = path.begin() + static_cast<long>(at + kPrefix.size());
    const auto end = std::find_if_not(number, path.end(), isDigit);
    if (end != number && (end == path.end() || *end == '/')) return true;
  }
  return false;
}

}  // namespace installer::faults
