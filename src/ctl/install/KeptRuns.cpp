#include "ctl/install/KeptRuns.h"

#include <fmt/format.h>

#include <algorithm>

#include "ctl/Output.h"
#include "hotfix/base/Path.h"
#include "platform/Clock.h"
#include "platform/EntryFacts.h"
#include "platform/FileManager.h"
#include "platform/Platform.h"
#include "platform/TrustedPath.h"
#include "platform/UserContext.h"

namespace installer::ctl::install {

namespace {

constexpr mode_t kOpenToRead = 0755;
constexpr mode_t kClosed = 0700;
constexpr mode_t kOthers = 0077;
constexpr std::size_t kLongestBundle = 64;
constexpr int kMostNames = 100;
// Who may open a folder can lock it: this one nobody else can open.
constexpr std::string_view kLockFolder = "lock";

FileManager& files() {
  return *Platform::current().files;
}

bool isPlain(char letter) {
  return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
         (letter >= 'a' && letter <= 'z') || letter == '-' || letter == '_' || letter == '.';
}

std::string timeText(std::chrono::system_clock::time_point time) {
  const auto whole = std::chrono::floor<std::chrono::milliseconds>(time);
  const auto midnight = std::chrono::floor<std::chrono::days>(whole);
  const std::chrono::year_month_day day(midnight);
  const std::chrono::hh_mm_ss clock(whole - midnight);
  return fmt::format("{:04}{:02}{:02}T{:02}{:02}{:02}.{:03}Z", static_cast<int>(day.year()),
                     static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                     clock.hours().count(), clock.minutes().count(), clock.seconds().count(),
                     clock.subseconds().count());
}

bool makeFolder(const std::string& path, mode_t mode, FileError& error) {
  const FileAttributes attributes{"root", "admin", mode};
  return files().createDirectory(path, Intermediates::refuse, attributes, &error);
}

// Why the folder cannot be used; it is made when it is missing.
std::optional<std::string> whyNoFolder(const std::string& path, mode_t mode) {
  FileError error;
  if (!entryAt(path) && !makeFolder(path, mode, error) && error.code != FileError::kExists)
    return error.description;
  if (const auto reason = reasonToDistrust(path, kRoot))
    return fmt::format("\"{}\" cannot be trusted: {}", path, *reason);
  if (!files().isDirectory(path)) return fmt::format("\"{}\" is no folder", path);
  return std::nullopt;
}

std::optional<std::string> whyNoLock(const std::string& path) {
  if (auto reason = whyNoFolder(path, kClosed)) return reason;
  const auto entry = entryAt(path);
  if (entry && entry->isFolder && (entry->mode & kOthers) == 0) return std::nullopt;
  return fmt::format("\"{}\" has to be a folder that is closed to everybody but root", path);
}

// Null without the lock; an empty reason when somebody else has it.
std::shared_ptr<const void> lockWithin(const std::string& path, const Deadline& deadline,
                                       std::string& reason) {
  while (true) {
    FileError error;
    LockAttempt attempt = files().tryLock(path, &error);
    if (!attempt.busy) reason = error.description;
    if (!attempt.busy || !deadline.allowsAnotherTry()) return std::move(attempt.hold);
  }
}

}  // namespace

std::unique_ptr<KeptRuns> KeptRuns::takeTurn(const std::string& folder, const Deadline& deadline,
                                             NoTurn& lack) {
  const std::string lock = path::appendingComponent(folder, kLockFolder);
  std::optional<std::string> reason = whyNoFolder(folder, kOpenToRead);
  if (!reason) reason = whyNoLock(lock);
  if (reason) {
    lack = {false, *reason};
    return nullptr;
  }
  std::string lockReason;
  auto turn = lockWithin(lock, deadline, lockReason);
  if (!turn) {
    lack = {lockReason.empty(), lockReason};
    return nullptr;
  }
  return std::unique_ptr<KeptRuns>(new KeptRuns(folder, std::move(turn)));
}

std::vector<std::string> KeptRuns::all() const {
  std::vector<std::string> runs;
  for (const std::string& name : files().list(_folder).value_or(std::vector<std::string>())) {
    const std::string path = path::appendingComponent(_folder, name);
    const auto entry = isNameOfRun(name) ? entryAt(path) : std::nullopt;
    if (entry && entry->isFolder && entry->owner == kRoot) runs.push_back(path);
  }
  return runs;
}

void KeptRuns::makeRoom(const Retention& retention, const std::string& newest) const {
  const auto oldest = std::chrono::system_clock::now() - std::chrono::days(retention.days);
  const std::string limit = timeText(oldest);
  std::vector<std::string> runs = all();
  std::erase(runs, newest);
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const bool isTooMany = runs.size() - i >= retention.runs;
    if (!isTooMany && path::lastComponent(runs[i]) >= limit) continue;
    FileError error;
    if (!files().remove(runs[i], &error)) complain(error.description);
  }
}

std::optional<std::string> KeptRuns::begin(const std::optional<std::string>& bundle,
                                           std::string& reason) const {
  FileError error;
  for (int tries = 0; tries < kMostNames; ++tries) {
    std::string path =
        path::appendingComponent(_folder, nameOfRun(std::chrono::system_clock::now(), bundle));
    if (makeFolder(path, kClosed, error)) return path;
    if (error.code != FileError::kExists) break;
    Platform::current().clock->pause(std::chrono::milliseconds(1));
  }
  reason = error.description;
  return std::nullopt;
}

std::string nameOfRun(std::chrono::system_clock::time_point time,
                      const std::optional<std::string>& bundle) {
  std::string name = path::lastComponent(bundle.value_or("unknown"));
  if (name.ends_with(".app")) name.resize(name.size() - 4);
  name.resize(std::min(name.size(), kLongestBundle));
  std::replace_if(
      name.begin(), name.end(), [](char letter) { return !isPlain(letter); }, '_');
  return fmt::format("{}-{}", timeText(time), name.empty() ? "unknown" : name);
}

bool isNameOfRun(std::string_view name) {
  constexpr std::string_view kForm = "00000000T000000.000Z-";
  if (name.size() <= kForm.size() || name.size() > kForm.size() + kLongestBundle) return false;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool isDigit = name[i] >= '0' && name[i] <= '9';
    if (kForm[i] == '0' ? !isDigit : name[i] != kForm[i]) return false;
  }
  return std::all_of(name.begin(), name.end(), isPlain);
}

}  // namespace installer::ctl::install
