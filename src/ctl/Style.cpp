#include "ctl/Style.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "platform/Console.h"
#include "platform/Platform.h"
#include "platform/UserContext.h"

namespace installer::ctl {

namespace {

constexpr std::size_t kFewestColumns = 20;
constexpr std::size_t kUsualColumns = 80;

std::optional<std::string> environment(const std::string& name) {
  const std::optional<std::string> value = Platform::current().users->environment(name);
  return value && !value->empty() ? value : std::nullopt;
}

std::optional<std::size_t> columnsFromEnvironment() {
  const std::string text = environment("COLUMNS").value_or("");
  std::size_t columns = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, columns);
  if (error != std::errc() || last != end || columns == 0) return std::nullopt;
  return columns;
}

// Whoever sets the variable means it; shells keep theirs to themselves.
std::optional<std::size_t> columns() {
  const auto told = columnsFromEnvironment();
  const auto found = told ? told : terminalColumns();
  if (!found) return std::nullopt;
  return std::max(kFewestColumns, *found);
}

bool wantsColors(std::string_view color) {
  if (color != "auto") return color == "always";
  return outputIsTerminal() && !environment("NO_COLOR") && environment("TERM") != "dumb";
}

}  // namespace

Style Style::chosenBy(std::string_view color) {
  Style style;
  style.color = wantsColors(color);
  style.width = columns();
  return style;
}

std::size_t Style::textWidth() const {
  return std::min(width.value_or(kUsualColumns), kUsualColumns);
}

std::string Style::marked(std::string_view text, std::string_view code) const {
  return color ? fmt::format("\x1b[{}m{}\x1b[0m", code, text) : std::string(text);
}

std::string Style::strong(std::string_view text) const {
  return marked(text, "1");
}

std::string Style::good(std::string_view text) const {
  return marked(text, "32");
}

std::string Style::warning(std::string_view text) const {
  return marked(text, "33");
}

std::string Style::bad(std::string_view text) const {
  return marked(text, "31");
}

std::string Style::faint(std::string_view text) const {
  return marked(text, "2");
}

}  // namespace installer::ctl
