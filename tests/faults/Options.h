#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace installer::faults {

// What a sweep is asked for.
struct Options {
  std::vector<std::string> scenarios;  // all when empty
  std::vector<std::string> kinds;      // all when empty; "fail" stands for all that begin so
  std::vector<std::string> without;    // rules that are not judged
  long first = 0;
  long last = 0;           // 0 for no limit
  std::size_t sample = 0;  // points for each scenario and kind, evenly spread; 0 for all
  unsigned long seed = 1;  // moves the sample
  std::size_t part = 1;    // of all points, which every process of several takes its share of
  std::size_t parts = 1;
  std::string state;     // file of what has been done; "" for none
  std::string program;   // the installer
  bool list = false;     // only tell what there is
  bool verbose = false;  // every call, and the traces
};

inline constexpr const char* kUsage =
    "usage: fault-sweep [option...]\n"
    "  --scenario NAME,...   only these scenarios\n"
    "  --kind NAME,...       only these kinds of fault; \"fail\" is every fail-...\n"
    "  --without RULE,...    what breaks these rules counts for nothing\n"
    "  --range FIRST-LAST    only these calls\n"
    "  --sample N            N points of each scenario and kind, evenly spread\n"
    "  --seed N              another sample\n"
    "  --part N/OF           every OF-th point, beginning with the N-th\n"
    "  --resume FILE         go on where the sweep with that file was broken off\n"
    "  --program FILE        sweep this program\n"
    "  --verbose             tell each call and the traces\n"
    "  --list                tell the scenarios and kinds\n";

// Nothing when they can not be understood.
std::optional<Options> optionsFrom(const std::vector<std::string>& arguments);

}  // namespace installer::faults
