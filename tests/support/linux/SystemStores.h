#pragma once

#include <string>

#include "platform/linux/FilePasteboard.h"
#include "platform/linux/UserPreferences.h"

namespace installer::test {

// The system's own pasteboard and preferences, for a sandbox. Each system's folder has one of the
// name, and CMake chooses it.
struct SystemStores {
  SystemStores(FileManager& files, UserContext& users, const std::string& pasteboardFile)
      : pasteboard(files, pasteboardFile), preferences(files, users) {}

  FilePasteboard pasteboard;
  UserPreferences preferences;
};

}  // namespace installer::test
