#pragma once

#include <map>
#include <string>

namespace installer::test {

// Of each item below the folder, by its relative path, all that stat() tells in one text: where and
// what it is, whose, its names, and the times of its last changes to the nanosecond. The last of
// them no change leaves as it was, be it one to what was there already.
std::map<std::string, std::string> statesBelow(const std::string& folder);

}  // namespace installer::test
