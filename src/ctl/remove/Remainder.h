#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ctl/status/Features.h"

namespace installer::ctl {

// Something of a hotfix that its removal leaves, or does not bring back.
struct Remainder {
  std::string_view name;  // for programs: "extras", "settings", "key-stores" or "features"
  std::string text;       // in sentences
  std::vector<std::string> paths;
};

// What lies in an instance whose hotfix was removed. `features`: those that were to be taken out.
std::vector<Remainder> remaindersIn(const std::string& rcpHome,
                                    const std::vector<Feature>& features);

}  // namespace installer::ctl
