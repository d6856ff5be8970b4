#pragma once

#include <string>
#include <string_view>

namespace installer::fuzz {

// Whether a fuzzer's inputs bring a whole package or a whole instance. What they do not bring is
// there already, and everything in it is as it should be.
enum class Given { package, instance };

// One run of the driver on the files that the input holds, in a root of this process's own. The
// input is a text of entries, each behind a line of its name:
//
//   --- HF/HF.pkg/Contents/Info.plist      a file; what follows, up to the next such line, is in it
//   --- data/.config/                      a folder
//   --- tmp/qlm.config -> /data            a link
//   --- tmp/qlm.config => data/file        another name of a file
//   --- launcher                           what each run of the launcher leaves as its result
//   --- processes                          what runs, an executable a line
//
// The package is "HF/HF.pkg", the destination "Applications", the data folder "data". Ends the
// process for what must not be, see WholeRun.cpp.
void tryRun(std::string_view input, Given given);

}  // namespace installer::fuzz
