#pragma once

#include <string>

namespace installer::ctl::support {

// As JSON, what the instance's folders that runs change hold: kind, mode, owner, group, size and
// time of each entry, and where links lead. Nothing but folders is opened.
std::string listingOf(const std::string& rcpHome);

}  // namespace installer::ctl::support
