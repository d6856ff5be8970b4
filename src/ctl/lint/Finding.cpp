#include "ctl/lint/Finding.h"

#include <utility>

namespace installer::ctl::lint {

namespace {

void replaceAll(const std::string& part, const std::string& by, std::string& in) {
  for (std::size_t at = in.find(part); at != std::string::npos; at = in.find(part, at + by.size()))
    in.replace(at, part.size(), by);
}

bool isInsideCharacter(std::string_view text, std::size_t at) {
  return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
}

// A text that quotes a value of any length: what is in the middle is left out, for the sentence
// goes on behind the value.
std::string shortened(std::string text) {
  if (text.size() <= Findings::kLongestText) return text;
  std::size_t head = Findings::kLongestText / 2;
  std::size_t tail = text.size() - Findings::kLongestText / 4;
  for (int i = 0; i < 3 && isInsideCharacter(text, head); ++i) --head;
  for (int i = 0; i < 3 && isInsideCharacter(text, tail); ++i) ++tail;
  return text.substr(0, head) + " ... " + text.substr(tail);
}

}  // namespace

void Findings::add(const Rule& rule, Place place, std::string message) {
  if (_disabled.contains(std::string(rule.id))) return;
  if (_counts[&rule]++ >= kMostOfOneRule) return;
  if (place.key) place.key = shortened(*std::move(place.key));
  place.file = shortened(std::move(place.file));
  _kept.push_back({&rule, std::move(place), shortened(std::move(message))});
}

std::size_t Findings::count(Level level) const {
  std::size_t sum = 0;
  for (const auto& [rule, count] : _counts)
    if (rule->level == level) sum += count;
  return sum;
}

std::map<std::string_view, std::size_t> Findings::dropped() const {
  std::map<std::string_view, std::size_t> dropped;
  for (const auto& [rule, count] : _counts)
    if (count > kMostOfOneRule) dropped[rule->id] = count - kMostOfOneRule;
  return dropped;
}

void Findings::move(const std::string& from, const std::string& to) {
  for (Finding& finding : _kept) {
    replaceAll(from, to, finding.place.file);
    replaceAll(from, to, finding.message);
  }
}

}  // namespace installer::ctl::lint
