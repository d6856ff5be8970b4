// Any bytes behind the first word of a binary property list are read or refused; what was read is
// written, and read again.

#include "ReadAgain.h"

namespace installer::fuzz {

namespace {

// Each byte may refer to an object, and 10,000 objects and a mebibyte of texts may be shared.
constexpr std::size_t kFirstBytes = std::size_t{16} << 20;
constexpr std::size_t kBytesForEach = 256;

}  // namespace

void tryInput(std::string_view input) {
  allowMemory(kFirstBytes, kBytesForEach);
  constexpr std::string_view kFirstWord = "bplist00";
  std::string bytes(input);
  // The word is put over the first bytes, so that a file is an input as it is.
  if (bytes.size() < kFirstWord.size()) return;
  bytes.replace(0, kFirstWord.size(), kFirstWord);
  if (const auto value = PropertyList::parse(bytes)) readAgain(*value);
}

}  // namespace installer::fuzz
