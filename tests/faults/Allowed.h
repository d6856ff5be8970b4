#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "faults/World.h"

namespace installer::faults {

// Something that must never be: the rule that it breaks, and what was found.
struct Violation {
  std::string rule;
  std::string text;
  friend bool operator==(const Violation&, const Violation&) = default;
};

// The entries of a file of keys and values, be it of lines or a property list; nothing for another
// file, and for one that can not be read.
std::optional<std::map<std::string, std::string>> entriesOf(const std::string& path,
                                                            const std::string& content);

// What every file may be, learned from runs in which nothing went wrong: every entry as it was at
// one moment of them, and each key of a file of keys and values with the value of one moment.
class Allowed {
 public:
  // Learns a moment; the files are without stamps.
  void learn(const Files& files);

  // What in the files was so at no moment. Temporary names are nothing to this, nor is an owner
  // when it is root, who makes every file and may not have been able to give it away.
  std::vector<Violation> against(const Files& files) const;

 private:
  // How often the path was there, and all that it was.
  struct States {
    int times = 0;
    std::set<std::string> kinds;
    std::set<std::string> contents;
    std::set<mode_t> modes;
    std::set<uid_t> owners;
    std::set<gid_t> groups;
    std::map<std::string, std::set<std::string>> values;
    std::map<std::string, int> keyTimes;
  };

  static void learnEntries(const std::string& path, const std::string& content, States& states);
  static std::optional<std::string> foreignContent(const std::string& path,
                                                   const std::string& content,
                                                   const States& states);

  std::map<std::string, States> _paths;
  int _moments = 0;
};

}  // namespace installer::faults
