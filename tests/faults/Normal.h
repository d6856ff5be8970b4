#pragma once

#include <string>

#include "faults/World.h"

namespace installer::faults {

// The text with every stamp of a minute since this process began written as "STAMP": runs of
// different minutes compare equal.
std::string withoutStamps(const std::string& text);

// The files with their names and contents so.
Files withoutStamps(const Files& files);

// Whether the entry is, or lies in, one that has not been given its name yet: the program calls it
// ".hotfix-" and a number until then.
bool isTemporary(const std::string& path);

}  // namespace installer::faults
