#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ctl/support/Redaction.h"
#include "platform/FileEnds.h"

namespace installer::ctl::support {

// What a file holds, which decides what of it is taken and how secrets are taken out of it.
enum class Content {
  lines,         // a text of lines: of a long one its beginning and its end
  document,      // XML: as a whole or not at all; so are the others
  propertyList,  // written as XML, also when it was binary
  json,
};

// A file of the machine that may go into the archive.
struct WantedFile {
  std::string folder;  // whose own path may go over links
  std::string below;   // none of which may be a link
  Content content = Content::lines;
};

// One entry of the archive, as it is planned.
struct Item {
  std::string entry;               // its path in the archive, of letters that every system takes
  std::string what;                // for people: no capital letter, no full stop
  std::optional<WantedFile> file;  // or else
  std::function<Redacted()> make;  // what is told in it, without secrets; empty for nothing
};

// What became of an item.
enum class Fate {
  listed,  // nothing was asked of it
  taken,
  cut,      // without its middle
  missing,  // there is no such file
  leftOut,  // there is one, but it cannot be taken
};

struct Collected {
  Item item;
  Fate fate = Fate::listed;
  std::string reason;  // why it was left out or cut, for people; empty for others
  std::size_t redactions = 0;
  std::uint64_t size = 0;  // of the file itself, bytes
  std::string bytes;       // of the entry
};

// How much is taken at most.
inline constexpr EndSizes kEnds{std::size_t{1} << 20, std::size_t{3} << 20};  // of one file, bytes
inline constexpr std::size_t kMostBytes = std::size_t{32} << 20;              // of all entries
inline constexpr std::size_t kMostRuns = 10;
inline constexpr std::size_t kMostInstances = 50;
inline constexpr std::size_t kMostProducts = 50;
inline constexpr std::size_t kMostListed = 10'000;  // entries of one folder
inline constexpr int kDeepestListed = 8;

// The whole path of the file; nullopt for what is made.
std::optional<std::string> pathOf(const Item& item);

}  // namespace installer::ctl::support
