#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Texts as a person sees them.
namespace installer::ctl {

// The text as one line that does nothing to a terminal: control characters, those that turn the
// direction of writing, and bytes that are no UTF-8 are spelled out.
std::string shown(std::string_view text);
// The same of a text that can be absent.
std::string shown(const std::optional<std::string>& text, std::string_view absent);

// How many columns the text takes: one for each character, none for a mark of Style's.
std::size_t columnsOf(std::string_view text);

// Paragraphs broken into lines of at most `width` columns where there are blanks, which stay as
// they are within a line; a longer word stands alone in its line. No width leaves every paragraph
// its line. The first line begins with `first`, others with as many blanks as `indent` says. Ends
// with a line feed.
struct Layout {
  std::optional<std::size_t> width;
  std::size_t indent = 0;
};
std::string broken(std::string_view text, const Layout& layout, std::string_view first = "");

// A term and what it means: beside each other, the meaning from column `layout.indent` on, or,
// where the term is too long for that or the line too short, one below the other.
std::string entry(std::string_view term, std::string_view meaning, const Layout& layout);

}  // namespace installer::ctl
