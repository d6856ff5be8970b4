#pragma once

#include <string>

#include "ctl/Json.h"
#include "ctl/Style.h"
#include "ctl/trace/TraceFile.h"

// What explain answers of a trace with a run in it.
namespace installer::ctl {

// One screen for people.
std::string screenOf(const Trace& trace, const Run& run, const Style& style);

// A step, as the screen has it.
std::string lineOf(const Step& step, const Style& style);

// For programs; the run may be missing.
Json documentOf(const Trace& trace);

// For viewers of traces: a complete event for each step, an instant one for each problem.
Json chromeTraceOf(const Run& run);

}  // namespace installer::ctl
