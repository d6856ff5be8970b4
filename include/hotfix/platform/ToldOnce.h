#pragma once

namespace installer {

struct Platform;

/// Keeps a log short: as long as one of these lives, a line that tells of a file (why it could not
/// be read or changed, whose it is) is written once for the same words. Without one every operation
/// tells what it meets. runInstaller(), Hotfix and HotfixUninstall make one for each of their runs;
/// a program that works on an instance through several operations may make one around them. Where
/// several live at a time they count as one, until the last is gone; nothing is kept after that.
class [[nodiscard]] ToldOnce {
 public:
  /// From here on.
  ToldOnce();
  ToldOnce(const ToldOnce&) = delete;
  ToldOnce& operator=(const ToldOnce&) = delete;
  ~ToldOnce();

 private:
  Platform& _platform;
};

}  // namespace installer
