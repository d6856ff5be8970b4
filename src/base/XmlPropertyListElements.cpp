#include "base/XmlPropertyListElements.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <utility>

#include "base/Base64.h"
#include "base/PropertyListDate.h"
#include "base/RealText.h"
#include "base/XmlBlanks.h"

namespace installer::PropertyList {

namespace {

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(xml::kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(xml::kBlanks) - first + 1);
}

std::optional<std::uint64_t> magnitude(std::string_view digits) {
  int base = 10;
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    base = 16;
    digits.remove_prefix(2);
  }
  std::uint64_t number{};
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
  if (error != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
  return number;
}

std::optional<Value> negative(std::uint64_t number) {
  constexpr std::uint64_t lowest = std::uint64_t{1} << 63;
  if (number > lowest) return std::nullopt;
  if (number == lowest) return Value(std::numeric_limits<std::int64_t>::min());
  return Value(-static_cast<std::int64_t>(number));
}

// Decimal or "0x" hexadecimal, with or without a sign.
std::optional<Value> integerFromText(std::string_view text) {
  const bool minus = text.starts_with('-');
  if (minus || text.starts_with('+')) text.remove_prefix(1);
  const std::optional<std::uint64_t> number = magnitude(text);
  if (!number) return std::nullopt;
  return minus ? negative(*number) : Value(*number);
}

// The platform writes "+infinity".
std::optional<Value> realValueFromText(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  const std::optional<double> number = realFromText(text);
  if (!number) return std::nullopt;
  return Value(*number);
}

std::optional<Value> dataFromText(std::string_view text) {
  std::optional<std::string> bytes = decodeBase64(text);
  if (!bytes) return std::nullopt;
  return Value(Data{*std::move(bytes)});
}

std::optional<Value> dateValueFromText(std::string_view text) {
  const std::optional<Date> date = dateFromText(text);
  if (!date) return std::nullopt;
  return Value(*date);
}

std::optional<Value> flagFromText(bool flag, std::string_view text) {
  if (!text.empty()) return std::nullopt;
  return Value(flag);
}

}  // namespace

std::optional<Tag> tagNamed(std::string_view name) {
  constexpr std::array<std::pair<std::string_view, Tag>, 11> tags{{{"key", Tag::key},
                                                                   {"string", Tag::string},
                                                                   {"dict", Tag::dict},
                                                                   {"array", Tag::array},
                                                                   {"integer", Tag::integer},
                                                                   {"true", Tag::yes},
                                                                   {"false", Tag::no},
                                                                   {"real", Tag::real},
                                                                   {"date", Tag::date},
                                                                   {"data", Tag::data},
                                                                   {"plist", Tag::plist}}};
  for (const auto& [text, tag] : tags)
    if (text.front() == name.front() && text == name) return tag;
  return std::nullopt;
}

std::optional<Value> leafFromText(Tag tag, std::string&& text) {
  switch (tag) {
    case Tag::integer:
      return integerFromText(trimmed(text));
    case Tag::real:
      return realValueFromText(trimmed(text));
    case Tag::date:
      return dateValueFromText(trimmed(text));
    case Tag::data:
      return dataFromText(text);
    case Tag::yes:
    case Tag::no:
      return flagFromText(tag == Tag::yes, trimmed(text));
    default:
      return Value(std::move(text));
  }
}

}  // namespace installer::PropertyList
