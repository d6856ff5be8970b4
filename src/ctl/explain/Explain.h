#pragma once

#include "ctl/Command.h"

namespace installer::ctl {

// hotfixctl explain: what a run did, and why it ended as it did.
extern const Command kExplain;

}  // namespace installer::ctl
