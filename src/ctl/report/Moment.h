#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Times as files tell them, in seconds since the epoch.
namespace installer::ctl::report {

// Of "2026-11-22T11:35:02+01:00"; nullopt for a text of another form, or a year out of 1970 to
// 9999.
std::optional<std::int64_t> momentOf(std::string_view isoTime);

// Of the name of a kept run, "20261122T153012.045Z-Quillmere".
std::optional<std::int64_t> momentOfRun(std::string_view name);

// "2026-11-22 10:35:02", in UTC. The moment is in those years.
std::string utcText(std::int64_t moment);

}  // namespace installer::ctl::report
