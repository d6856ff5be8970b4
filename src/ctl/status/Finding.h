#pragma once

#include <string>
#include <string_view>

namespace installer::ctl {

// Something about an instance that needs attention.
struct Finding {
  std::string_view name;  // for programs: "version-without-identifier"
  std::string text;       // for people, in a sentence; with texts of files as they stand in them
  std::string remedy;
};

}  // namespace installer::ctl
