#pragma once

#include <map>
#include <string>

// The descriptors of this process, by number, with what each is open on. Defined once in each
// system's folder.
std::map<int, std::string> openDescriptors();
