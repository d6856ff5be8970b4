#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ctl/status/InstanceReport.h"
#include "ctl/trace/Run.h"

// What files from many machines tell. All of it may come from somebody who means harm: texts are as
// they stand in the files, cut to kLongestText, and numbers are within bounds.
namespace installer::ctl::report {

inline constexpr std::size_t kLongestText = 1000;  // bytes
inline constexpr std::size_t kMostInstances = 50;  // of one machine
inline constexpr std::size_t kMostFindings = 50;   // of one instance
inline constexpr std::size_t kMostProblems = 5;    // of a run
inline constexpr std::int64_t kMostSeconds = 100'000'000;

struct ToldFinding {
  std::string name;  // "left-over-item"
  std::string text;
  std::string remedy;
};

struct ToldInstance {
  std::string place;  // its bundle, or else its rcp home
  InstanceState state = InstanceState::noHotfix;
  std::optional<std::string> version;  // of the hotfix; nullopt when it has none
  std::vector<ToldFinding> findings;

  // Whether it is known that it has this version, or none.
  bool isVersionKnown() const { return state < InstanceState::noInstance; }
};

struct ToldRun {
  std::string cause;                  // "application-running"
  std::optional<std::string> line;    // that tells why
  std::optional<std::int64_t> ended;  // seconds since the epoch
  std::optional<std::int64_t> seconds;
  std::optional<std::string> packageVersion;
  std::optional<std::string> versionBefore;
  std::optional<std::string> keptRun;  // its folder on the machine
  std::vector<Step> steps;             // none where they are not known
  std::vector<Problem> problems;       // errors and warnings of its trace
  std::size_t problemsLeftOut = 0;
};

// What one file or kept run tells.
struct Told {
  std::string machine;
  std::int64_t at = 0;  // when it was so, seconds since the epoch
  std::vector<ToldInstance> instances;
  std::optional<ToldRun> run;  // the last one
};

}  // namespace installer::ctl::report
