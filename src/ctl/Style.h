#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace installer::ctl {

// How answers for people look.
struct Style {
  bool color = false;
  std::optional<std::size_t> width;  // in columns; nullopt when lines may have any length

  // The text so marked, where colours are wanted; as it is elsewhere.
  std::string strong(std::string_view text) const;
  std::string good(std::string_view text) const;
  std::string warning(std::string_view text) const;
  std::string bad(std::string_view text) const;
  std::string faint(std::string_view text) const;

  // The width of texts that are made of sentences.
  std::size_t textWidth() const;

  // What fits standard output and the environment. `color` is "auto", "always" or "never".
  static Style chosenBy(std::string_view color);

 private:
  std::string marked(std::string_view text, std::string_view code) const;
};

}  // namespace installer::ctl
