#include "ctl/Commands.h"

#include <array>

#include "ctl/explain/Explain.h"
#include "ctl/install/Install.h"
#include "ctl/lint/LintCommand.h"
#include "ctl/new/NewCommand.h"
#include "ctl/plan/PlanCommand.h"
#include "ctl/rehearse/RehearseCommand.h"
#include "ctl/remove/RemoveCommand.h"
#include "ctl/report/Report.h"
#include "ctl/status/Status.h"
#include "ctl/support/Support.h"

namespace installer::ctl {

std::span<const Command> commands() {
  static const std::array kAll{kNew,    kLint,    kPlan,   kRehearse, kInstall,
                               kStatus, kExplain, kReport, kRemove,   kSupport};
  return kAll;
}

}  // namespace installer::ctl
