#include "LaunchVector.h"

namespace sample {

namespace {

const std::string kOverridePrefix = "-DprovUpdateSiteListOverride=";

// Walks the arguments once from the front.
class Cursor {
 public:
  explicit Cursor(const std::vector<std::string>& arguments) : _arguments(arguments) {}

  bool atEnd() const { return _next == _arguments.size(); }

  bool take(const std::string& expected) {
    if (atEnd() || _arguments[_next] != expected) return false;
    ++_next;
    return true;
  }

  bool takeAll(const std::vector<std::string>& expected) {
    for (const std::string& one : expected) {
      if (!take(one)) return false;
    }
    return true;
  }

  std::optional<std::string> takeAny() {
    if (atEnd()) return std::nullopt;
    return _arguments[_next++];
  }

  // What follows `prefix` in the next argument.
  std::optional<std::string> takeBehind(const std::string& prefix) {
    if (atEnd() || !_arguments[_next].starts_with(prefix)) return std::nullopt;
    return _arguments[_next++].substr(prefix.size());
  }

 private:
  const std::vector<std::string>& _arguments;
  std::size_t _next = 0;
};

std::optional<Operation> takeOperation(Cursor& cursor) {
  if (cursor.take("update")) return Operation::kUpdate;
  if (cursor.take("cleanup")) return Operation::kCleanUp;
  return std::nullopt;
}

// The site override comes with a property that repeats the operation, and only for an update.
bool takeOverride(Cursor& cursor, LaunchVector& launch) {
  if (!cursor.take("-DprovisioningOperation=update")) return true;
  launch.siteOverride = cursor.takeBehind(kOverridePrefix + "file:");
  return launch.siteOverride && launch.operation == Operation::kUpdate;
}

bool takeData(Cursor& cursor, LaunchVector& launch) {
  if (cursor.atEnd()) return !launch.siteOverride;
  if (!cursor.take("-data")) return false;
  launch.rcpData = cursor.takeAny();
  return launch.rcpData && cursor.atEnd();
}

}  // namespace

std::optional<LaunchVector> readLaunchVector(const std::vector<std::string>& arguments) {
  Cursor cursor(arguments);
  LaunchVector launch;
  if (!cursor.takeAll(
          {"-rcpLauncherWait", "-provManifest", "-noSplash", "-provisioningOperation"})) {
    return std::nullopt;
  }
  const std::optional<Operation> operation = takeOperation(cursor);
  if (!operation || !cursor.take("-nl")) return std::nullopt;
  launch.operation = *operation;
  launch.locale = cursor.takeAny().value_or("");
  if (launch.locale.empty() || !cursor.takeAll({"-vmargs", "-Dfile.encoding=UTF-8"})) {
    return std::nullopt;
  }
  if (!takeOverride(cursor, launch) || !cursor.takeAll({"-Xms32m", "-Xmx256m"}) ||
      !takeData(cursor, launch)) {
    return std::nullopt;
  }
  return launch;
}

}  // namespace sample
