#pragma once

#include "ctl/Json.h"
#include "ctl/plan/Plan.h"

namespace installer::ctl {

// The plan for programs, with everything; how texts change only where it is asked for.
Json planJson(Plan& plan, bool withDifferences);

}  // namespace installer::ctl
