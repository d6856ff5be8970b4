#pragma once

#include <string>

#include "platform/posix/Descriptor.h"

namespace installer::overlay {

// Keeps what this process writes to standard output while the object lives: a pipe's worth, what is
// more is lost. Where there is no pipe to be had everything goes its usual way.
class KeptOutput {
 public:
  KeptOutput();
  KeptOutput(const KeptOutput&) = delete;
  KeptOutput& operator=(const KeptOutput&) = delete;
  ~KeptOutput() { (void)take(); }  // nobody wants it

  // Ends the keeping and answers what was kept.
  std::string take();

 private:
  Descriptor _usual;  // where standard output goes otherwise; none when nothing is kept
  Descriptor _kept;
};

}  // namespace installer::overlay
