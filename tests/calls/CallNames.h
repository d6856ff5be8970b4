#pragma once

#include <string>

namespace installer::calls {

inline constexpr long kChangeModeAtCall = 452;  // newer than the headers of some systems

// The name of the system call of that number; "call <number>" for one that is not known here.
std::string nameOfCall(long number);

// Whether how often it is made is the C library's business (memory) more than the program's.
bool isLibrarys(long number);

}  // namespace installer::calls
