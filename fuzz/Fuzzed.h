#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// What all fuzzers share. Each is one source, which says what is done with an input.
namespace installer::fuzz {

// Defined by the fuzzer: tries an input of any bytes. It is watched meanwhile: see Fuzzed.cpp for
// the memory and the time that it may take.
void tryInput(std::string_view input);

// From now on an input may take `first` bytes and `forEach` for each of its own, instead of what
// Fuzzed.cpp has for all.
void allowMemory(std::size_t first, std::size_t forEach);

// The rest of this input may take any memory, up to the fuzzer's own limit: each level of a folder
// takes more than its name.
void leaveMemoryUnwatched();

// Ends the process, so that the input is kept, unless it holds.
void require(bool holds, const char* what);

// The texts that an input is made of, one a line; empty ones follow without an end.
class Lines {
 public:
  explicit Lines(std::string_view input) : _rest(input) {}

  std::string next();

 private:
  std::string_view _rest;
};

}  // namespace installer::fuzz
