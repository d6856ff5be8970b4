#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ctl/report/Inputs.h"
#include "ctl/report/Told.h"

// The machines of which something was told.
namespace installer::ctl::report {

// The worst comes first.
enum class Standing { failed, needsAttention, atWork, noHotfix, good };

struct Machine {
  std::string name;
  std::vector<ToldInstance> instances;  // each as it was told last
  std::optional<ToldRun> run;           // the last one
  Standing standing = Standing::good;

  // What its hotfixes are called, each once and in order: their versions, or the words for that
  // there is none or none is known.
  std::vector<std::string> versions() const;
  // In a word or two what is to be known of it: "Provisioning failed", "Hotfix installed".
  std::string label() const;
};

// Words in place of a version, which holds no blank at its begin.
inline constexpr std::string_view kNoVersion = "none";
inline constexpr std::string_view kUnknownVersion = "not known";

// "Application running" of "application-running".
std::string labelOf(std::string_view name);

// Something that machines have in common. They are told by their places in the fleet.
struct Group {
  std::string name;
  std::vector<std::size_t> machines;
};

struct Fleet {
  std::vector<Machine> machines;  // the worst first, then by name
  std::vector<Group> versions;    // the most frequent first, then by name; so are the others
  std::vector<Group> failures;    // by cause
  std::vector<Group> findings;
};

// Brings together what was told of each machine. Of a run that was told twice, the telling with its
// steps counts.
Fleet fleetOf(std::vector<Told> told);

// Whether a run that ended for this cause has done what was wanted, or may still do it.
bool isFailure(std::string_view cause);

// What the program's tables tell of a cause, whatever the files tell; those of roll-outs included.
struct CauseWords {
  std::string_view meaning;
  std::string_view remedy;
};
CauseWords wordsOf(std::string_view cause);

}  // namespace installer::ctl::report
