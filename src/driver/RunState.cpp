#include "driver/RunState.h"

namespace installer {

RunState& runState() {
  static RunState state;
  return state;
}

}  // namespace installer
