#pragma once

namespace installer {

// To be called first in main. Fills closed descriptors 0 to 2 with the null device, so that no file
// opened later can be taken for standard output, and ignores SIGPIPE and SIGXFSZ, so that a write
// that cannot be done is an error of that write and not the end of the process. From then on the
// system log shows the process's lines under the program's name, with the process's number.
void setUpProcess();

}  // namespace installer
