#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

struct PlanRequest;
struct PlanDetail;
struct Surroundings;

extern const Command kPlan;

// Plays the run and answers what it came to, as the command does; the exit status with it.
int tellPlan(const PlanRequest& request, const PlanDetail& detail, Surroundings& surroundings);

}  // namespace installer::ctl
