#pragma once

#include <filesystem>

namespace installer::bench {

// Fills `data`, which does not exist yet, with small files of every kind, the same ones each time.
void makeSmallData(const std::filesystem::path& data);

}  // namespace installer::bench
