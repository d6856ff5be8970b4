#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Platform.h"
#include "platform/Preferences.h"
#include "platform/ProcessTable.h"
#include "platform/SystemLog.h"
#include "platform/UserContext.h"
#include "platform/overlay/OverlayFileManager.h"
#include "platform/overlay/PlannedChildren.h"
#include "platform/posix/FilePasteboard.h"

namespace installer::overlay {

struct PlannedLine {
  LogLevel level = LogLevel::info;
  std::string text;
};

// Keeps the lines and mirrors them nowhere.
class PlannedLog : public SystemLog {
 public:
  const std::vector<PlannedLine>& lines() const { return _lines; }

  void write(LogLevel level, std::string_view message) override {
    _lines.push_back({level, std::string(message)});
  }
  [[nodiscard]] int addFile(int) override { return 0; }
  void removeFile(int) override {}

 private:
  std::vector<PlannedLine> _lines;
};

// The users as the one for whom is planned sees them. He can be another user by saying so.
class PlannedUsers : public UserContext {
 public:
  PlannedUsers(UserContext& real, uid_t user) : _real(real), _user(user) {}

  [[nodiscard]] std::optional<std::string> environment(const std::string& variable) override {
    return _real.environment(variable);
  }
  [[nodiscard]] std::optional<std::string> currentUserName() override;
  uid_t effectiveUserId() override { return _user; }
  [[nodiscard]] std::optional<User> findUser(const std::string& name) override {
    return _real.findUser(name);
  }
  [[nodiscard]] std::optional<gid_t> findGroup(const std::string& name) override {
    return _real.findGroup(name);
  }
  [[nodiscard]] bool setEffectiveUserId(uid_t) override { return true; }

 private:
  UserContext& _real;
  const uid_t _user;
};

// The processes that run. A plan waits for none of them: it sees no command lines.
class PlannedProcesses : public ProcessTable {
 public:
  explicit PlannedProcesses(ProcessTable& real) : _real(real) {}

  // Whether anybody has looked at them.
  bool areAsked() const { return _areAsked; }

  std::vector<std::string> valuesForKey(std::string_view key) override {
    _areAsked = true;
    return _real.valuesForKey(key);
  }
  bool seesAll() override { return _real.seesAll(); }
  std::vector<std::vector<std::string>> commandLines(uid_t) override { return {}; }
  std::string asReported(const std::string& path) override { return _real.asReported(path); }

 private:
  ProcessTable& _real;
  bool _areAsked = false;
};

// The console user's preferences. Those of a user whom the process may not become are noted.
class PlannedPreferences : public Preferences {
 public:
  PlannedPreferences(const Platform& real, Tree& tree) : _real(real), _tree(tree) {}

  [[nodiscard]] std::optional<PropertyList::Dictionary> domain(std::string_view name) override;

 private:
  const Platform& _real;
  Tree& _tree;
};

// The platform for a run that is only planned: what it reads is real, what it does stays here. The
// real platform must outlive it.
class PlannedPlatform : public Platform {
 public:
  // `maker`: as whom the run is planned.
  PlannedPlatform(const Platform& real, const Maker& maker);

  // Whether the run has looked at the processes.
  bool hasAskedForProcesses() const { return _processes.areAsked(); }

  OverlayFileManager overlay;
  PlannedChildren noted;
  PlannedLog lines;

 private:
  PlannedUsers _users;
  PlannedProcesses _processes;
  PlannedPreferences _preferences;
  FilePasteboard _pasteboard;
};

// Root, with this process's creation mask.
Maker rootAsMaker();

}  // namespace installer::overlay
