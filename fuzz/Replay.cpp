// What a fuzzer is without libFuzzer: it tries each file that it is given, once, in their order.
// libFuzzer's own options are taken and mean nothing. Status 1 when a file cannot be read; what an
// input makes fail ends the process by a signal, behind a line with the input's name.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool replay(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string input{std::istreambuf_iterator<char>(file), {}};
  if (!file) {
    std::fprintf(stderr, "%s cannot be read\n", path.c_str());
    return false;
  }
  std::fprintf(stderr, "%s\n", path.c_str());
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  LLVMFuzzerInitialize(&count, &arguments);
  std::vector<std::string> paths(arguments + 1, arguments + count);
  std::erase_if(paths, [](const std::string& path) { return path.starts_with('-'); });
  return std::ranges::all_of(paths, replay) ? 0 : 1;
}
