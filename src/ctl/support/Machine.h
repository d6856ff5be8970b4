#pragma once

#include <string>

namespace installer::ctl::support {

// As JSON, the versions of this program and of the system, the user it runs as, the time, and what
// a failed check left: the error marker.
std::string machineDocument();

}  // namespace installer::ctl::support
