#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "hotfix/base/DeletedForNull.h"
#include "hotfix/platform/FileError.h"

namespace installer {

/// Keeps other installers from an instance as long as this object lives, or until the process ends,
/// however it ends. Every run of runInstaller() takes the same lock before its first check: whoever
/// holds it sees an instance that no other run is changing. It is advisory, it leaves no file, and
/// children do not inherit it. A process that holds it may take it again, as runInstaller() does in
/// a program that holds it already.
class [[nodiscard]] InstanceLock {
 public:
  /// Waits until no other process works on the rcp home [notice, and once more after ten seconds],
  /// then holds it. A missing home is not made and not waited for.
  explicit InstanceLock(const std::string& rcpHome);
  /// Both homes, in any order and be they the same: while it waits for one it does not hold the
  /// other, so that two who want the same two do not wait for each other.
  InstanceLock(const std::string& rcpHome, const std::string& otherRcpHome);

  /// Takes over what the other lock holds.
  InstanceLock(InstanceLock&&) noexcept = default;
  /// The same, after letting go of what this one held.
  InstanceLock& operator=(InstanceLock&&) noexcept = default;
  InstanceLock(const InstanceLock&) = delete;
  InstanceLock& operator=(const InstanceLock&) = delete;
  ~InstanceLock() = default;

  /// Whether every home is held. False when one is no folder, when its file system has no locks
  /// [warning], and when there is a refusal(): nothing then keeps others away from it.
  bool isHeld() const { return _isHeld; }

  /// Why a home that is there could not be locked on a file system that has locks [error]; nullopt
  /// when there is no such home. Another installer may be at work in it: change nothing there.
  const std::optional<FileError>& refusal() const { return _refusal; }

  /// Whether another process had a home when this one asked for it. What both write, the error
  /// record among it, may by now tell of the other.
  bool hasWaited() const { return _hasWaited; }

  /// @cond
  // No text is nullptr.
  HOTFIX_DELETED_FOR_NULL(explicit InstanceLock);
  /// @endcond

 private:
  [[nodiscard]] bool take(const std::set<std::string>& rcpHomes);
  void judge(FileError error);

  std::vector<std::shared_ptr<const void>> _holds;
  bool _isHeld = false;
  bool _hasWaited = false;
  std::optional<FileError> _refusal;
};

}  // namespace installer
