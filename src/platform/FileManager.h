#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hotfix/platform/FileError.h"

namespace installer {

// What a copy does when something stands at the destination already, be it a dangling link.
enum class ExistingItem {
  keep,  // left exactly as it is; the copy counts as done
  fail,  // left exactly as it is; the copy fails with FileError::kExists
  // Gives way to the copy, a folder with all below it; a file gives way in one step, so that there
  // is never none. Also goes when nothing can be copied. What stays makes the copy fail, and so
  // does an item that is to take its own place: it is gone then.
  replace,
};

// What a copy takes. A link at the path is copied as a link, unless its content is wanted: then one
// that leads to a regular file in the folder that holds the link, or in one of the folders `within`
// (at any depth; the root folder counts as none), is copied as that file, and another not at all.
struct CopySource {
  CopySource(std::string item) : path(std::move(item)) {}  // converts, for plain paths are the rule
  CopySource(const char* item) : path(item) {}
  CopySource(std::string item, std::vector<std::string> folders)
      : path(std::move(item)), within(std::move(folders)) {}

  std::string path;
  std::optional<std::vector<std::string>> within;  // nullopt when a link is wanted as a link
  // Who may own the item, for what other users could have planted: asked of the very item that is
  // copied, once, however its name is exchanged meanwhile. What is below a folder is not asked for.
  std::function<bool(uid_t)> mayOwn;  // empty when anybody may
};

// Whose a file is, and whether the name it was found under is its only one.
struct FileOrigin {
  uid_t owner = 0;
  bool hasOtherNames = false;
};

// Whether createDirectory makes missing folders above the last one.
enum class Intermediates { create, refuse };

// Whether a write takes over owner and mode of the file that it replaces.
enum class ReplacedFile { takeOver, forget };

// Which items under temporary names are left over.
enum class LeftOvers {
  // In the folder itself, files that no living process is making; so are folders, where others can
  // not give such a name to root's. For folders that others work in. Links, which are made and
  // named at once, are not looked at.
  within,
  // All of them, at every depth: for a folder whose lock the caller has.
  below,
};

// What an attempt to take a folder's lock came to.
struct [[nodiscard]] LockAttempt {
  // Whether another process has the lock.
  bool busy = false;
  // Keeps the lock as long as a copy of it lives; null when it could not be had.
  std::shared_ptr<const void> hold;
};

// Owner, group and mode of a new or changed item. Names are account names.
struct FileAttributes {
  std::string owner;
  std::string group;  // "admin" stands for the owner's primary group where there is no such group
  mode_t mode = 0;    // permission bits, the process's file-creation mask does not apply
};

// The file system. Every operation works on bytes of paths as given, without "~" expansion, and
// answers failures by its result: nothing is thrown (but std::bad_alloc, and Interrupted before a
// change) and nothing is logged (Reported.h has the forms that are). An `error` that is not null is
// set on failure only. FileError::kMissing then means that nothing is there for certain; what
// cannot be looked at or read for another reason may well be.
//
// Safety, for every operation: a file appears under its name whole or not at all; no sockets,
// pipes or devices are opened; walks hold directory descriptors and never pass through a symbolic
// link that was not named by the caller. Temporary names begin with ".hotfix-".
class FileManager {
 public:
  static constexpr std::size_t kMaximumRead = std::size_t{64} << 20;  // bytes

  FileManager() = default;
  FileManager(const FileManager&) = delete;
  FileManager& operator=(const FileManager&) = delete;
  virtual ~FileManager() = default;

  // Opens the folder once, for as long as a copy of the answer lives: whatever becomes of its name
  // meanwhile, all paths below it are looked up beneath what was opened. Links on the way are
  // followed to places inside it only; what leads elsewhere can neither be looked at nor changed. A
  // folder that is missing is opened when it is there. One to which another user's link leads is
  // opened when that user owns it; else all that can be asked is whether something is there.
  // `newOwner`: the account that what is below the folder is handed to. A file with several names
  // that somebody else owns counts as unreadable then, for it can be one that this user is not
  // meant to see. Null, with nothing held, for the root.
  [[nodiscard]] virtual std::shared_ptr<const void> hold(
      const std::string& folder, const std::optional<std::string>& newOwner) = 0;

  // Links are followed: a dangling link does not exist.
  virtual bool exists(const std::string& path, FileError* error = nullptr) = 0;
  // Exists and is a folder, links followed.
  virtual bool isDirectory(const std::string& path) = 0;

  // The user id of the entry itself, links not followed; nullopt when there is none.
  [[nodiscard]] virtual std::optional<uid_t> owner(const std::string& path) = 0;

  // The names in the folder that begin with the prefix, sorted by byte, without "." and "..";
  // nullopt when it cannot be listed.
  [[nodiscard]] virtual std::optional<std::vector<std::string>> list(const std::string& folder,
                                                                     std::string_view prefix) = 0;
  // All names.
  [[nodiscard]] std::optional<std::vector<std::string>> list(const std::string& folder) {
    return list(folder, {});
  }

  // The bytes of a regular file (links followed) of at most kMaximumRead; nullopt for anything
  // else: missing, unreadable, too long, or no regular file.
  [[nodiscard]] virtual std::optional<std::string> read(const std::string& path,
                                                        FileError* error = nullptr) = 0;

  // As read(), for a file that other users could have planted in a folder open to all: the last
  // component is not followed if it is a link. `origin`, if any, is that of the file that is read.
  [[nodiscard]] virtual std::optional<std::string> readUnlinked(const std::string& path,
                                                                FileOrigin* origin,
                                                                FileError* error = nullptr) = 0;

  // Replaces or creates the file at `path`: temporary file in the same folder, all bytes, fsync,
  // rename, fsync of the folder. A link at `path` is replaced, never written through. A new file
  // (and with ReplacedFile::forget every file) has mode 0666 less the creation mask, or exactly
  // `mode` when it is given.
  [[nodiscard]] virtual bool write(const std::string& path, std::string_view bytes,
                                   ReplacedFile replaced = ReplacedFile::takeOver,
                                   std::optional<mode_t> mode = std::nullopt,
                                   FileError* error = nullptr) = 0;

  // Copies a file, a link (as a link) or a whole tree to `to`, whose parent must exist. Permission
  // bits (without set-id bits) and modification times are kept, owners are the process's. Stops at
  // the first item that cannot be copied; what was copied until then keeps its name. A folder
  // cannot be copied into itself.
  [[nodiscard]] virtual bool copy(const CopySource& from, const std::string& to,
                                  ExistingItem existing, FileError* error = nullptr) = 0;
  // Whether the source is no link whose content is wanted in vain.
  virtual bool hasContent(const CopySource& source) = 0;

  // Brings the entries of the folder `from` into the existing folder `to`: a folder (links to
  // folders count) is merged the same way into an existing entry and copied whole where there is
  // none; anything else replaces what stands there, folders included, and what cannot be copied
  // still loses its old entry. Entries that only `to` has stay. Failures are passed over. A
  // destination link that leads out of `boundary` is replaced instead of entered; so is one that
  // leads into the source. An empty or missing boundary holds nothing.
  virtual void merge(const std::string& from, const std::string& to,
                     const std::string& boundary) = 0;

  // Removes the entry, a folder with all below it; links are removed, not followed. False when
  // something is left or nothing was there.
  [[nodiscard]] virtual bool remove(const std::string& path, FileError* error = nullptr) = 0;

  // Removes what processes that were killed left under temporary names. Only what belongs to a user
  // whom UserContext::trusts() goes, for what is made can have got its owner already. No link is
  // followed below the folder. What cannot be removed stays, and nobody is told.
  virtual void removeLeftOvers(const std::string& folder, LeftOvers which) = 0;

  // Makes a folder: mode 0777 less the creation mask, or the attributes. With
  // Intermediates::create an existing folder counts as made (its attributes stay); without it is a
  // failure. A folder whose attributes cannot be applied is removed again and counts as failed.
  [[nodiscard]] virtual bool createDirectory(
      const std::string& path, Intermediates intermediates,
      const std::optional<FileAttributes>& attributes = std::nullopt,
      FileError* error = nullptr) = 0;

  // Puts a new file with these bytes in place of whatever file or link stands at `path`; a folder
  // there makes it fail. Attributes are applied by descriptor before the file gets its name; an
  // owner that cannot be given is passed over.
  [[nodiscard]] virtual bool createFile(const std::string& path, std::string_view bytes,
                                        const FileAttributes& attributes) = 0;

  // Writes everything that is pending on the folder's file system down to the medium: what others
  // have written there is as durable then as what this class writes.
  [[nodiscard]] virtual bool flush(const std::string& folder, FileError* error = nullptr) = 0;

  // Whether `path` is a folder that changeAttributesBelow() enters: a link to one must, like every
  // other link that is then on the way, have one name and belong to root or the effective user.
  // Whoever owns a link chooses where it leads.
  [[nodiscard]] virtual bool mayEnter(const std::string& path) = 0;

  // Applies the attributes to everything below the folders at all depths, not to the folders
  // themselves. All are opened before anything changes, and a link that names one of them keeps its
  // owner, so that the folder is still entered the next time. Another link's own owner changes, its
  // target never. A file with several links whose owner is not the new owner is left alone and
  // counts as failed. Goes on after failures; true when every change succeeded. False when a folder
  // does not exist or may not be entered.
  [[nodiscard]] virtual bool changeAttributesBelowAll(const std::vector<std::string>& folders,
                                                      const FileAttributes& attributes) = 0;
  [[nodiscard]] bool changeAttributesBelow(const std::string& folder,
                                           const FileAttributes& attributes) {
    return changeAttributesBelowAll({folder}, attributes);
  }

  // Opens a log file for writing from its start, mode 0644 when new, without following a link. A
  // file that is not a regular one with one name and owned by this process is removed and created
  // anew. The descriptor is the caller's until closeLog(); -1 when it cannot be had.
  [[nodiscard]] virtual int openLog(const std::string& path) = 0;
  // Closes what openLog() answered; nothing happens for -1.
  virtual void closeLog(int descriptor) = 0;

  // Takes the folder's lock unless another process has it; never waits. A lock that this process
  // holds already is held once more. Children do not inherit it, and it ends with the process.
  // `error` is set when the lock can not be had although nobody has it: FileError::kMissing where
  // there is no such folder, kClosed where it is kept from this process, and kNoLocks where its
  // file system has none.
  [[nodiscard]] virtual LockAttempt tryLock(const std::string& folder,
                                            FileError* error = nullptr) = 0;
};

}  // namespace installer
