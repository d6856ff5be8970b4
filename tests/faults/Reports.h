#pragma once

#include <set>
#include <string>
#include <vector>

#include "faults/Allowed.h"
#include "faults/Runner.h"

namespace installer::faults {

// What a run tells: its status, the error record, the trace.

// The content of a file, "" for none.
std::string contentOf(const Files& files, const std::string& path);

// The texts of the trace's warnings and errors.
std::set<std::string> complaintsIn(const std::string& trace);

// Every line of the trace is whole and has the form of one. A trace that was never opened has none.
std::vector<Violation> judgeTrace(const Files& files);

// A record that is there can be read, and has a code that the program gives.
std::vector<Violation> judgeRecord(const Files& files);

// The run ends by itself and its status is 0 or 1.
std::vector<Violation> judgeEnd(const Run& run);

// The same, and the status is not 0 unless this hotfix's own manifest was provisioned with success.
std::vector<Violation> judgeStatus(const Scenario& scenario, const Run& run);

// No temporary name is left but those that were there before.
std::vector<Violation> judgeLeftOvers(const Files& files, const Files& before);

// An undisturbed run ends with the scenario's own status and code, and leaves nothing over.
std::vector<Violation> endsAsExpected(const Scenario& scenario, const Run& run);

}  // namespace installer::faults
