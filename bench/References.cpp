#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "Benchmarks.h"

namespace installer::bench {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool flush(const char* path, int flags) {
  const int descriptor = open(path, flags | O_CLOEXEC);
  const bool isFlushed = fsync(descriptor) == 0;
  close(descriptor);
  return isFlushed;
}

// As durable as what the installer writes: the file is flushed, renamed, and its folder flushed.
bool putInPlace(const std::string& temporary, const std::string& path) {
  return flush(temporary.c_str(), O_WRONLY) && std::rename(temporary.c_str(), path.c_str()) == 0 &&
         flush(fs::path(path).parent_path().c_str(), O_RDONLY | O_DIRECTORY);
}

// The bytes of both files are read, and those of the first are written.
void moveBytes(benchmark::State& state, const std::string& file, const std::string& saved) {
  for (auto _ : state) {
    const std::string text = contentOf(file + ".properties");
    if (text.empty()) return state.SkipWithError("not read");
    benchmark::DoNotOptimize(contentOf(file + ".merge.properties"));
    std::ofstream(saved + ".new", std::ios::binary) << text;
    if (!putInPlace(saved + ".new", saved)) state.SkipWithError("not saved");
  }
}

// What libxml2 takes for a tree that is read and written once.
void readAndWriteTree(benchmark::State& state, const std::string& file, const std::string& saved) {
  for (auto _ : state) {
    xmlDoc* document = xmlReadFile(file.c_str(), nullptr, XML_PARSE_NONET);
    if (document == nullptr) {
      state.SkipWithError("not read");
      break;
    }
    const bool isWritten = xmlSaveFormatFile((saved + ".new").c_str(), document, 1) >= 0;
    xmlFreeDoc(document);
    if (!isWritten || !putInPlace(saved + ".new", saved)) state.SkipWithError("not saved");
  }
}

void registerReference(const std::string& name,
                       void (*reference)(benchmark::State&, const std::string&, const std::string&),
                       const fs::path& file, const fs::path& saved) {
  benchmark::RegisterBenchmark((name + "/reference").c_str(),
                               [=](benchmark::State& state) { reference(state, file, saved); })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
}

}  // namespace

void registerReferences(const BenchData& data) {
  const fs::path saved = data.live() / "reference";
  for (const int size : data.sizes("props", "", ".merge.properties"))
    registerReference("properties_roundtrip/" + std::to_string(size), moveBytes,
                      data.data() / "props" / std::to_string(size), saved);
  for (const int size : data.sizes("plist", "", ".xml.plist"))
    for (const char* form : {"xml", "bin"})
      registerReference("plist_set_key/" + std::to_string(size) + "/" + form, readAndWriteTree,
                        data.data() / "plist" / (std::to_string(size) + ".xml.plist"), saved);
  for (const int size : data.sizes("manifest", "", ".xml"))
    registerReference("manifest_rewrite/" + std::to_string(size), readAndWriteTree,
                      data.data() / "manifest" / (std::to_string(size) + ".xml"), saved);
}

}  // namespace installer::bench
