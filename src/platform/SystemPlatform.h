#pragma once

#include <memory>

#include "platform/Platform.h"

namespace installer {

// The services of the system that the program is built for, kept alive with the platform. Defined
// once in each system's folder; the build chooses the folder.
std::shared_ptr<Platform> makeSystemPlatform();

}  // namespace installer
