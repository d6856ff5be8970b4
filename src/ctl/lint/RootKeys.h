#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace installer::ctl::lint {

// The keys of a property list's root dictionary, with how often each stands there.
using RootKeys = std::map<std::string, std::size_t, std::less<>>;

// Those of the XML form; none of a binary list.
RootKeys rootKeysOf(std::string_view list);

}  // namespace installer::ctl::lint
