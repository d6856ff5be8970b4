#pragma once

#include "platform/Clock.h"

namespace installer {

class PosixClock : public Clock {
 public:
  std::tm localTime() override;
  void pause(std::chrono::milliseconds time) override;
};

}  // namespace installer
