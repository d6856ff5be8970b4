#pragma once

#include <string>

#include "ctl/Json.h"
#include "ctl/Style.h"
#include "ctl/report/Fleet.h"

// What report answers beside the page.
namespace installer::ctl::report {

std::string textOf(const Fleet& fleet, const std::string& page, const Style& style);

Json documentOf(const Fleet& fleet, const std::vector<LeftOut>& leftOut, const std::string& page,
                int status);

}  // namespace installer::ctl::report
