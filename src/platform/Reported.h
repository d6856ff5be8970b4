#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/FileManager.h"

// What the file manager does, with a reason for what it could not do: one error line with the path
// and the system's words, once for the same words where a ToldOnce lives. Operations that promise
// to write no line of their own ask the file manager itself.
//
// Stores use these too instead of leaving the line to their callers: a property store answers yes
// whatever the disk says, so that the reason would be lost on the way.
namespace installer::reported {

// Writes the line.
void tell(const FileError& error);
// The same for a file that is there; what is missing, or was read, is no failure.
void tellUnreadable(const std::optional<FileError>& error);

// What cannot be looked at is told and does not count as existing. What is missing is no failure.
bool exists(const std::string& path);

[[nodiscard]] bool write(const std::string& path, std::string_view bytes,
                         ReplacedFile replaced = ReplacedFile::takeOver,
                         std::optional<mode_t> mode = std::nullopt);
[[nodiscard]] bool copy(const CopySource& from, const std::string& to, ExistingItem existing);

[[nodiscard]] bool flush(const std::string& folder);

// False without a line when nothing was there.
[[nodiscard]] bool remove(const std::string& path);

}  // namespace installer::reported
