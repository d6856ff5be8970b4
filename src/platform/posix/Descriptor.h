#pragma once

#include <unistd.h>

#include <utility>

namespace installer {

// Owns an open file descriptor. A number below zero stands for none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : _number(number) {}
  Descriptor(Descriptor&& other) noexcept : _number(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(_number, other._number);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (_number >= 0) (void)::close(_number);  // what matters was synchronised before
  }

  bool valid() const { return _number >= 0; }
  int get() const { return _number; }
  int release() { return std::exchange(_number, -1); }

 private:
  int _number = -1;
};

}  // namespace installer
