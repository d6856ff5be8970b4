#pragma once

namespace installer {

// Renames as syscalls::renameKeepingExisting() does, on file systems that cannot keep an existing
// entry by themselves: -1 with errno, EEXIST when something stands at the new name. A file gets a
// second name first, which fails on an existing one. Where there are no second names either, and
// for a folder, the look comes before the renaming: a file of somebody else's that appears between
// both is lost, as is an empty folder.
[[nodiscard]] int renameInSteps(int fromFolder, const char* from, int toFolder, const char* to);

}  // namespace installer
