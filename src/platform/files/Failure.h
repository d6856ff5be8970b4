#pragma once

#include <string>
#include <string_view>

#include "hotfix/platform/FileError.h"

namespace installer {

// What the system calls an error number.
std::string reasonOf(int error);

// The one form in which a failure is told: '"path" cannot be done: reason'. `done` says what was
// tried, "read" say.
FileError failure(int code, const std::string& path, std::string_view done,
                  std::string_view reason);
// The same for an error number, which decides the code.
FileError failure(const std::string& path, std::string_view done, int error);
// The same for what can be done only with an item that is there.
FileError failureWithItem(const std::string& path, std::string_view done, int error);
// The same for reading: what is no regular file has a code of its own.
FileError readFailure(const std::string& path, int error);

// The same for locks.
FileError lockFailure(const std::string& path, int error);

// Whether the error number says that nothing is there. Whatever else keeps us from an item, it may
// well be there.
[[nodiscard]] bool tellsMissing(int error);

}  // namespace installer
