#include "ctl/Commands.h"

#include <array>

#include "ctl/explain/Explain.h"
#include "ctl/lint/LintCommand.h"

namespace installer::ctl {

std::span<const Command> commands() {
  static const std::array kAll{kExplain, kLint};
  return kAll;
}

}  // namespace installer::ctl
