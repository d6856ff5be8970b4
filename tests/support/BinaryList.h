#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace installer::test {

// The `size` lowest bytes of the number, most significant first.
inline std::string bigEndian(std::uint64_t number, std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t place = size; place > 0; --place) {
    bytes[place - 1] = static_cast<char>(number & 0xFF);
    number >>= 8;
  }
  return bytes;
}

// A binary property list put together object by object, with every field open to be wrong.
struct BinaryList {
  std::vector<std::string> objects;  // each with its first byte
  std::size_t offsetSize = 1;        // bytes
  std::size_t referenceSize = 1;     // bytes, as the trailer tells it
  std::uint64_t root = 0;
  std::string magic = "bplist00";

  // Where the offset table begins.
  std::size_t table() const {
    std::size_t end = magic.size();
    for (const std::string& object : objects) end += object.size();
    return end;
  }

  std::string bytes() const {
    std::string list = magic;
    std::string offsets;
    for (const std::string& object : objects) {
      offsets += bigEndian(list.size(), offsetSize);
      list += object;
    }
    return list + offsets + trailer(objects.size(), table());
  }

  std::string trailer(std::uint64_t count, std::uint64_t tableOffset) const {
    return std::string(6, '\0') + bigEndian(offsetSize, 1) + bigEndian(referenceSize, 1) +
           bigEndian(count, 8) + bigEndian(root, 8) + bigEndian(tableOffset, 8);
  }
};

// An object from the byte that tells its kind and what follows.
inline std::string object(unsigned marker, std::string_view body = {}) {
  return std::string(1, static_cast<char>(marker)).append(body);
}

// A short text of ASCII characters.
inline std::string asciiObject(std::string_view text) {
  return object(0x50U + static_cast<unsigned>(text.size()), text);
}

}  // namespace installer::test
