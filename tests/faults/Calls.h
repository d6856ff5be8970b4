#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace installer::faults {

// What a call does to the world outside of the process. Others than these are not counted.
enum class Effect { looking, changing };

// The calls that can be acted on differ in what they take and in how they can fail.
struct CallForm {
  long number;
  std::string_view name;
  Effect effect;
  std::vector<int> errors;  // with which it can fail, as the kernel would have it
  // Positions of arguments, -1 for none. A path is looked up from the folder, if there is one, else
  // from the working directory.
  int descriptor = -1;
  int folder = -1;
  int path = -1;
  int otherFolder = -1;
  int otherPath = -1;
  int size = -1;   // bytes to be written
  int flags = -1;  // those of an opening, which may be for reading or for writing
};

// One counted call as the program is about to make it.
struct Call {
  const CallForm* form = nullptr;
  Effect effect = Effect::looking;
  std::vector<int> errors;  // the form's, less those that need a change where there is none
  std::array<std::uint64_t, 6> arguments{};
};

// Reads a number of the program's memory.
using ReadNumber = std::function<std::uint64_t(std::uint64_t address)>;

bool startsChild(const CallForm& form);

// Nothing for a call that is not counted.
std::optional<Call> callOf(long number, const std::array<std::uint64_t, 6>& arguments,
                           const ReadNumber& numberAt);

// "EIO" for the number, and back; 0 for an unknown name.
std::string nameOfError(int error);
int errorNamed(std::string_view name);

}  // namespace installer::faults
