#pragma once

#include <string>

namespace installer {

// Takes the folder's advisory lock, as FileManager::lock promises. A folder that this process
// holds already is held.
bool lockFolder(const std::string& folder, void (*onWait)());

}  // namespace installer
