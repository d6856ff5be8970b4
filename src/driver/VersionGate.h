#pragma once

namespace installer {

// Both read runState().

// Whether the installed hotfix is higher than the package's, which must then not be installed:
// error record 7 is sent. Versions are compared as plain texts, so 1.10 is lower than 1.9; an equal
// or an absent version is no obstacle. Both are logged.
bool isHigherHotfixVersionInstalled();

// Whether the instance records any hotfix, of whatever version.
bool isOtherHotfixVersionInstalled();

}  // namespace installer
