#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "hotfix/platform/FileError.h"

namespace installer {

// A folder in the making, which appears under its name whole or not at all: until then it has a
// temporary name beside its place, and nobody else gets in. It goes with this object unless it has
// got its name, Interrupted or whatever else ends its making.
//
// Paths are below the folder; none is absolute, climbs or leads over a link. Folders get mode 0755,
// files 0644, or 0755 where the owner may execute what was copied, whatever the creation mask.
// Operations that fail answer false and set `error`.
class NewTree {
 public:
  NewTree() = default;
  NewTree(const NewTree&) = delete;
  NewTree& operator=(const NewTree&) = delete;
  virtual ~NewTree() = default;

  // Where the folder is while it is made.
  virtual const std::string& place() const = 0;

  // With the missing folders above it. One that is there counts as made.
  [[nodiscard]] virtual bool addFolder(std::string_view path, FileError& error) = 0;
  // A new file, in a folder that is there.
  [[nodiscard]] virtual bool addFile(const std::string& path, std::string_view bytes,
                                     FileError& error) = 0;
  // What is in the folder `from`, which may be named by a link, becomes what is in the new folder
  // `path`, the folder above which is there. Links are copied as links; a pipe, socket or device is
  // a failure.
  [[nodiscard]] virtual bool addCopy(const std::string& from, const std::string& path,
                                     FileError& error) = 0;

  // Writes all of it down to the medium and gives it its name. What stands there is left alone,
  // unless it is an empty folder, which is replaced.
  [[nodiscard]] virtual bool finish(FileError& error) = 0;
};

// Begins the folder at the path, whose parent must be there. Null, with `error` set, when it cannot
// be begun: FileError::kExists where something else than an empty folder has the name already.
[[nodiscard]] std::unique_ptr<NewTree> beginTree(const std::string& path, FileError& error);

}  // namespace installer
