#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace installer::bench {

// What is made of each kind: "props" -> {1000, 100000}. The kinds are the folders that BenchData
// reads: entries of props and plist, features of manifest, files of tree and wide, megabytes of
// each of big's twenty files, entries of attrs, levels of deep, folders of plugins.
using DataSizes = std::map<std::string, std::vector<int>>;

// A minute's worth of everything.
DataSizes smallSizes();

// Takes a "kind=number,number" over; whether it is one, of a kind that can be made.
bool takeSizes(std::string_view text, DataSizes& sizes);

// Fills `data` with files of these kinds and sizes, the same ones each time. What is there already
// is written again.
void makeData(const std::filesystem::path& data, const DataSizes& sizes);

}  // namespace installer::bench
