#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileManager.h"
#include "platform/UserContext.h"
#include "platform/files/Ownership.h"
#include "platform/overlay/HeldNodes.h"
#include "platform/overlay/Tree.h"

namespace installer::overlay {

// The real file system under a sheet of glass: what is read comes from the disk as long as nothing
// has been changed over it, and changes stay in memory. The disk is left as it is, down to its
// times of change, and nobody else is kept waiting: no lock is taken. It answers as the real file
// manager of a process that nothing is closed to would; where this process may not look, the answer
// is what it gets, and the place is among unknown().
class OverlayFileManager : public FileManager {
 public:
  // Account names are looked up in `users`, which must live at least as long.
  OverlayFileManager(UserContext& users, const Maker& maker);

  // What came of it so far.
  Tree& tree() { return _tree; }
  // What the path leads to by now.
  Found found(const std::string& path) { return _held.glimpse(path); }
  const std::set<std::string>& unknown() const { return _tree.unknown(); }

  [[nodiscard]] std::shared_ptr<const void> hold(
      const std::string& folder, const std::optional<std::string>& newOwner) override;
  bool exists(const std::string& path, FileError* error = nullptr) override;
  bool isDirectory(const std::string& path) override;
  [[nodiscard]] std::optional<uid_t> owner(const std::string& path) override;
  using FileManager::list;
  [[nodiscard]] std::optional<std::vector<std::string>> list(const std::string& folder,
                                                             std::string_view prefix) override;
  [[nodiscard]] std::optional<std::string> read(const std::string& path,
                                                FileError* error = nullptr) override;
  [[nodiscard]] std::optional<std::string> readUnlinked(const std::string& path, FileOrigin* origin,
                                                        FileError* error = nullptr) override;
  [[nodiscard]] bool write(const std::string& path, std::string_view bytes,
                           ReplacedFile replaced = ReplacedFile::takeOver,
                           std::optional<mode_t> mode = std::nullopt,
                           FileError* error = nullptr) override;
  [[nodiscard]] bool copy(const CopySource& from, const std::string& to, ExistingItem existing,
                          FileError* error = nullptr) override;
  bool hasContent(const CopySource& source) override;
  void merge(const std::string& from, const std::string& to, const std::string& boundary) override;
  [[nodiscard]] bool remove(const std::string& path, FileError* error = nullptr) override;
  void removeLeftOvers(const std::string& folder, LeftOvers which) override;
  [[nodiscard]] bool createDirectory(const std::string& path, Intermediates intermediates,
                                     const std::optional<FileAttributes>& attributes = std::nullopt,
                                     FileError* error = nullptr) override;
  [[nodiscard]] bool createFile(const std::string& path, std::string_view bytes,
                                const FileAttributes& attributes) override;
  [[nodiscard]] bool flush(const std::string& folder, FileError* error = nullptr) override;
  [[nodiscard]] bool mayEnter(const std::string& path) override;
  [[nodiscard]] bool changeAttributesBelowAll(const std::vector<std::string>& folders,
                                              const FileAttributes& attributes) override;
  // The file is there and stays empty: the descriptor is one of the null device.
  [[nodiscard]] int openLog(const std::string& path) override;
  void closeLog(int descriptor) override;
  // Nobody is asked and nobody kept away: the answer holds nothing.
  LockAttempt tryLock(const std::string& folder, FileError* error = nullptr) override;

 private:
  std::optional<std::string> readFound(const Found& found, const std::string& path,
                                       FileError* error);
  [[nodiscard]] int replace(const std::string& path, std::string_view bytes, ReplacedFile replaced,
                            std::optional<mode_t> mode);
  [[nodiscard]] int putFile(const Found& place, Content content, mode_t mode,
                            const Ownership& ownership);
  [[nodiscard]] int removeAt(const std::string& path);
  [[nodiscard]] int makeFolder(const std::string& path, bool withFoldersAbove,
                               const std::optional<FileAttributes>& attributes);
  [[nodiscard]] int makeFoldersAbove(const std::string& path);
  [[nodiscard]] int makeFolderAt(const Found& place,
                                 const std::optional<FileAttributes>& attributes);
  [[nodiscard]] int makeLog(const std::string& path);
  bool isFolderAt(const std::string& path);

  UserContext& _users;
  Tree _tree;
  HeldNodes _held{_tree, _users};
};

}  // namespace installer::overlay
