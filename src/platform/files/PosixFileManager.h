#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileManager.h"
#include "platform/UserContext.h"
#include "platform/files/FileChanges.h"
#include "platform/files/FileOperation.h"
#include "platform/files/HeldFolders.h"

namespace installer {

// The real file system.
class PosixFileManager : public FileManager {
 public:
  // Account names are looked up in `users`, which must live at least as long.
  explicit PosixFileManager(UserContext& users);

  [[nodiscard]] std::shared_ptr<const void> hold(
      const std::string& folder, const std::optional<std::string>& newOwner) override;
  bool exists(const std::string& path, FileError* error = nullptr) override;
  [[nodiscard]] std::optional<uid_t> owner(const std::string& path) override;
  bool isDirectory(const std::string& path) override;
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
  [[nodiscard]] int openLog(const std::string& path) override;
  void closeLog(int descriptor) override;
  LockAttempt tryLock(const std::string& folder, FileError* error = nullptr) override;

 protected:
  // Asked before each change to the disk: 0 to go on, or the error number that the change is to
  // fail with. Lets a test see how every step's failure ends.
  [[nodiscard]] virtual int refusal(FileOperation operation);

 private:
  [[nodiscard]] int replace(const std::string& path, std::string_view bytes, ReplacedFile replaced,
                            std::optional<mode_t> mode);
  [[nodiscard]] int removeAt(const std::string& path);
  [[nodiscard]] int makeFolder(const std::string& path, bool withFoldersAbove,
                               const std::optional<FileAttributes>& attributes);

  UserContext& _users;
  HeldFolders _folders;
  FileChanges _changes;
};

}  // namespace installer
