#pragma once

#include <string>
#include <string_view>

#include "platform/NewTree.h"
#include "platform/files/FileChanges.h"
#include "platform/files/Opening.h"
#include "platform/files/TemporaryItem.h"
#include "platform/posix/Descriptor.h"

namespace installer {

// The one that makes NewTree's promises true.
class TreeMaking : public NewTree {
 public:
  // `refusal` is asked before each change to the disk.
  TreeMaking(const std::string& path, FileChanges::Door refusal);

  // Before all else, once.
  [[nodiscard]] bool begin(FileError& error);

  const std::string& place() const override { return _place; }
  [[nodiscard]] bool addFolder(std::string_view path, FileError& error) override;
  [[nodiscard]] bool addFile(const std::string& path, std::string_view bytes,
                             FileError& error) override;
  [[nodiscard]] bool addCopy(const std::string& from, const std::string& path,
                             FileError& error) override;
  [[nodiscard]] bool finish(FileError& error) override;

 private:
  [[nodiscard]] int whyNotFree();
  [[nodiscard]] int makeItself();
  [[nodiscard]] int fillFile(const std::string& path, std::string_view bytes);
  [[nodiscard]] int settleModes(Descriptor folder, int depth);
  [[nodiscard]] int settleMode(int folder, const std::string& name, int depth);
  [[nodiscard]] int giveName();
  [[nodiscard]] bool check(int error, std::string_view path, FileError& answer);

  std::string _path;   // without trailing slashes
  std::string _place;  // once it has begun
  FileChanges _changes;
  Place _parent;
  TemporaryItem _item;
  Descriptor _root;
};

}  // namespace installer
