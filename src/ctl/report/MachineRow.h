#pragma once

#include <string>
#include <string_view>

#include "ctl/report/Fleet.h"

namespace installer::ctl::report {

// The machine's row of the page's table, with its last run as a timeline that is closed at first.
// Tags that HTML lets be left out are: a report can be of very many machines.
void appendRow(const Machine& machine, std::size_t number, std::string& page);

// The class by which the page's style knows it.
std::string_view classOf(Standing standing);

// What the colours and names of the timelines stand for.
void appendKey(std::string& page);

}  // namespace installer::ctl::report
