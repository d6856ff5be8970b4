// Whatever instance and machine a sound package is installed into, the run comes to its end.

#include "Fuzzed.h"
#include "WholeRun.h"

namespace installer::fuzz {

void tryInput(std::string_view input) {
  tryRun(input, Given::instance);
}

}  // namespace installer::fuzz
