#pragma once

#include <cerrno>
#include <new>

namespace installer {

// Throws std::bad_alloc when the system says that it has no memory. For calls whose failure would
// otherwise pass for an answer: an empty list, an unknown user.
inline void checkMemory(int error) {
  if (error == ENOMEM) throw std::bad_alloc();
}

}  // namespace installer
