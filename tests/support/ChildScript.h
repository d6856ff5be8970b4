#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace installer::test {

// What a played child does when it is started, in this order: snapshots, input, then the steps.
class ChildScript {
 public:
  // Records the item at the path as it is at the start.
  ChildScript& snapshot(const std::string& path);
  // Records all of standard input.
  ChildScript& input();
  ChildScript& write(const std::string& path, std::string_view bytes);
  ChildScript& remove(const std::string& path);
  ChildScript& folder(const std::string& path);
  ChildScript& rename(const std::string& from, const std::string& to);
  ChildScript& link(const std::string& path, const std::string& target);
  ChildScript& print(std::string_view text);
  ChildScript& printError(std::string_view text);
  // Goes on when something is at the path.
  ChildScript& await(const std::string& path);
  // Sends the signal to whoever started it.
  ChildScript& signalParent(int signal);
  ChildScript& exit(int status);
  ChildScript& kill(int signal);

  const std::string& text() const { return _text; }

 private:
  ChildScript& add(std::string_view step, std::string_view first, std::string_view second = {});

  std::string _text;
};

// How one child was started.
struct ChildRecord {
  std::string role;
  std::string executable;  // as it was started
  std::vector<std::string> arguments;
  std::string directory;
  std::map<std::string, std::string> environment;
  std::map<int, std::string> descriptors;  // number -> what it is open on
  std::vector<int> ignoredSignals;
  std::vector<int> blockedSignals;
  unsigned mask = 0;
  unsigned user = 0;
  std::string input;
  // Path -> a letter for the kind (A absent, F file, D folder, L link, O other) and the content.
  std::map<std::string, std::string> snapshots;

  static ChildRecord parse(const std::string& text);

  // The content of the snapshot of a file; nullopt when it was absent or no file.
  std::optional<std::string> fileAt(const std::string& path) const;
};

}  // namespace installer::test
