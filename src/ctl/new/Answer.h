#pragma once

#include <string>

#include "ctl/Json.h"
#include "ctl/Style.h"
#include "ctl/new/Making.h"
#include "ctl/new/Wanted.h"

// What became of a package, in the forms in which it is told.
namespace installer::ctl::package {

// For people; that of a package that was not made is what was found in it.
std::string textOf(const Wanted& wanted, const Outcome& outcome, const Style& style);

// For programs: schema hotfixctl/new/1.
Json jsonOf(const Wanted& wanted, const Outcome& outcome);

}  // namespace installer::ctl::package
