// Whatever package is installed into a sound instance, the run comes to its end.

#include "Fuzzed.h"
#include "WholeRun.h"

namespace installer::fuzz {

void tryInput(std::string_view input) {
  tryRun(input, Given::package);
}

}  // namespace installer::fuzz
