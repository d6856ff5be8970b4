#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ctl/report/Told.h"

// What the files that the programs make of a machine tell.
namespace installer::ctl::report {

// Of a JSON document: the answer of status, the result of an installation, or what a roll-out notes
// of a host. The machine has no name yet, but where the document has it. `modified`: when the file
// was changed last. nullopt, with the reason, for anything else.
std::optional<Told> toldBy(std::string_view text, std::int64_t modified, std::string& reason);

// Of the trace of a run that has ended; `name` is its kept run's.
Told toldBy(const Run& run, std::string_view name, std::int64_t modified);

}  // namespace installer::ctl::report
