#pragma once

#include <string>

#include "ctl/Style.h"
#include "ctl/plan/Plan.h"

namespace installer::ctl {

// How much is told.
struct PlanDetail {
  bool differences = false;  // how texts change
  bool all = false;          // each owner and mode, and what is written again as it was
};

// The plan for people.
std::string planText(Plan& plan, const PlanDetail& detail, const Style& style);

// One sentence for each reason.
std::string reasonText(const Plan& plan);

}  // namespace installer::ctl
