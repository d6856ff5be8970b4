#include <elf.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "faults/Tracee.h"

namespace installer::faults {

namespace {

// The file's bytes; what lies outside of them reads as zeros.
class Image {
 public:
  explicit Image(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    _bytes.assign(std::istreambuf_iterator<char>(stream), {});
  }

  template <class Record>
  Record at(std::uint64_t offset) const {
    Record record{};
    if (offset + sizeof record <= _bytes.size())
      std::memcpy(&record, _bytes.data() + offset, sizeof record);
    return record;
  }

  bool nameIs(std::uint64_t offset, const std::string& name) const {
    return offset + name.size() < _bytes.size() &&
           std::memcmp(_bytes.data() + offset, name.c_str(), name.size() + 1) == 0;
  }

 private:
  std::vector<char> _bytes;
};

Elf64_Shdr section(const Image& image, const Elf64_Ehdr& header, std::uint64_t index) {
  return image.at<Elf64_Shdr>(header.e_shoff + index * header.e_shentsize);
}

std::optional<std::uint64_t> mainIn(const Image& image, const Elf64_Ehdr& header,
                                    const Elf64_Shdr& symbols) {
  const Elf64_Shdr names = section(image, header, symbols.sh_link);
  for (std::uint64_t at = 0; at < symbols.sh_size; at += sizeof(Elf64_Sym)) {
    const auto symbol = image.at<Elf64_Sym>(symbols.sh_offset + at);
    if (ELF64_ST_TYPE(symbol.st_info) == STT_FUNC && symbol.st_value != 0 &&
        image.nameIs(names.sh_offset + symbol.st_name, "main"))
      return symbol.st_value - header.e_entry;
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::uint64_t> distanceOfMain(const std::string& program) {
  const Image image(program);
  const auto header = image.at<Elf64_Ehdr>(0);
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_machine != EM_X86_64)
    return std::nullopt;
  for (std::uint64_t index = 0; index < header.e_shnum; ++index) {
    const Elf64_Shdr symbols = section(image, header, index);
    if (symbols.sh_type != SHT_SYMTAB) continue;
    if (const auto distance = mainIn(image, header, symbols)) return distance;
  }
  return std::nullopt;
}

}  // namespace installer::faults
