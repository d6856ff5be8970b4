#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/files/Failure.h"
#include "platform/files/PosixFileManager.h"

namespace installer::test {

// The real file manager, which refuses the changes that a test picks and remembers the others.
class FailingFileManager : public PosixFileManager {
 public:
  using PosixFileManager::PosixFileManager;

  // The next change of this kind fails with the error number; later ones go on.
  void failNext(FileOperation operation, int error) {
    _kind = operation;
    _kindError = error;
  }

  // The n-th change from now on (1 is the next) fails, whatever its kind; later ones go on.
  void failAt(std::size_t number, int error) {
    _number = _operations.size() + number;
    _numberError = error;
  }

  // From now on every change of this kind fails, until stopFailing().
  void failAlways(FileOperation operation, int error) {
    _alwaysKind = operation;
    _alwaysError = error;
  }

  // Runs the action just before the next change of this kind, which then goes on. It may ask
  // for another.
  void beforeNext(FileOperation operation, std::function<void()> action) {
    _actionKind = operation;
    _action = std::move(action);
  }

  // From now on this path can neither be looked at nor read, until stopFailing().
  void failReading(const std::string& path, int error) { _unreadable[path] = error; }

  // From now on this folder, or any, cannot be locked, until stopFailing().
  void failLocking(int error, const std::optional<std::string>& folder = std::nullopt) {
    _lockError = error;
    _unlockable = folder;
  }

  void stopFailing() {
    _unreadable.clear();
    _lockError = 0;
    _kind.reset();
    _alwaysKind.reset();
    _number = 0;
  }

  // True once a failure asked for with failNext() or failAt() has happened.
  bool hasFailed() const { return _hasFailed; }

  // Every change that was asked for, refused ones included, in order.
  const std::vector<FileOperation>& operations() const { return _operations; }

  bool exists(const std::string& path, FileError* error = nullptr) override {
    if (isReadable(path, "looked at", error)) return PosixFileManager::exists(path, error);
    return false;
  }
  std::optional<std::string> read(const std::string& path, FileError* error = nullptr) override {
    if (isReadable(path, "read", error)) return PosixFileManager::read(path, error);
    return std::nullopt;
  }
  std::optional<std::string> readUnlinked(const std::string& path, FileOrigin* origin,
                                          FileError* error = nullptr) override {
    if (!isReadable(path, "read", error)) return std::nullopt;
    return PosixFileManager::readUnlinked(path, origin, error);
  }
  LockAttempt tryLock(const std::string& folder, FileError* error = nullptr) override {
    if (_lockError == 0 || folder != _unlockable.value_or(folder))
      return PosixFileManager::tryLock(folder, error);
    if (error != nullptr) *error = lockFailure(folder, _lockError);
    return {};
  }

 protected:
  int refusal(FileOperation operation) override {
    _operations.push_back(operation);
    if (_actionKind == operation) {
      _actionKind.reset();
      std::exchange(_action, nullptr)();
    }
    if (_alwaysKind == operation) return _alwaysError;
    if (_number == _operations.size()) return refuse(_numberError);
    if (_kind != operation) return 0;
    _kind.reset();
    return refuse(_kindError);
  }

 private:
  int refuse(int error) {
    _hasFailed = true;
    return error;
  }

  bool isReadable(const std::string& path, std::string_view done, FileError* error) const {
    const auto found = _unreadable.find(path);
    if (found == _unreadable.end()) return true;
    if (error != nullptr) *error = failureWithItem(path, done, found->second);
    return false;
  }

  std::map<std::string, int> _unreadable;
  int _lockError = 0;
  std::optional<std::string> _unlockable;  // nullopt: every folder
  std::optional<FileOperation> _kind;
  int _kindError = 0;
  std::optional<FileOperation> _actionKind;
  std::function<void()> _action;
  std::optional<FileOperation> _alwaysKind;
  int _alwaysError = 0;
  std::size_t _number = 0;  // 0: none
  int _numberError = 0;
  bool _hasFailed = false;
  std::vector<FileOperation> _operations;
};

}  // namespace installer::test
