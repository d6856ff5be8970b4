#pragma once

namespace installer {

// The kinds of change that the file manager makes to the disk, as its refusal door sees them.
enum class FileOperation {
  kCreateTemporary,  // any new file, under a temporary name or not
  kWrite,            // the bytes of one file; also its truncation
  kSync,             // of a file, a folder or a file system
  kRename,
  kUnlink,  // of a file or link; also of an empty folder
  kMakeDirectory,
  kChangeOwner,
  kChangeMode,
  kLink,
};

}  // namespace installer
