#pragma once

#include <string_view>

namespace installer::ctl::lint {

// How much a finding matters. An error is harm that every installation does, or one that nobody can
// have meant; a warning is harm where other things come together; a note is worth knowing.
enum class Level { note, warning, error };

// One way in which a package fails silently or surprises its author.
struct Rule {
  std::string_view id;  // "HF" and three digits; means the same in every version
  Level level;
  std::string_view sentence;     // what is wrong, of any package
  std::string_view remedy;       // what to do
  std::string_view explanation;  // what the installer makes of it, and what comes of that
};

}  // namespace installer::ctl::lint
