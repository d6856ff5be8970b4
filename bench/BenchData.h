#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace installer::bench {

// The files that the benchmarks work on. Whoever compares us with other programs makes them and
// puts them into their state before each start: PEERS_DATA names the folder of what is read,
// PEERS_LIVE the folder of what is written. Without these variables small ones are made in a
// temporary folder of our own, which is removed at the end.
//
// Read below data(): props/N.properties and props/N.merge.properties, plist/N.xml.plist and
// plist/N.bin.plist, manifest/N.xml, tree/N (a folder of N files), big/20xM (20 files of M MB
// each), attrs/N (a folder with N entries below it), wide/N (a folder that holds a folder of N
// files), deep/N (a folder with N levels below it), plugins/N (an rcp home with N plug-in folders).
class BenchData {
 public:
  BenchData();
  BenchData(const BenchData&) = delete;
  BenchData& operator=(const BenchData&) = delete;
  ~BenchData();

  const std::filesystem::path& data() const { return _data; }
  const std::filesystem::path& live() const { return _live; }
  // Whether a benchmark has to make its state by itself.
  bool own() const { return !_root.empty(); }

  // The N for which the folder has an entry of this name, ascending: sizes("props", "",
  // ".properties").
  std::vector<int> sizes(const char* folder, std::string_view prefix,
                         std::string_view suffix) const;

 private:
  std::filesystem::path _root;  // empty when the folders are somebody else's
  std::filesystem::path _data;
  std::filesystem::path _live;
};

}  // namespace installer::bench
