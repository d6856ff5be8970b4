#include <benchmark/benchmark.h>

#include "Benchmarks.h"
#include "hotfix/util/InstallUtil.h"

namespace installer::bench {
namespace {

namespace fs = std::filesystem;

// A copy changes what the next one would find, so each benchmark copies once.
void registerOnce(const std::string& name, void (*copy)(benchmark::State&, const BenchData&, int),
                  const BenchData& data, int size) {
  benchmark::RegisterBenchmark(
      name.c_str(), [&data, copy, size](benchmark::State& state) { copy(state, data, size); })
      ->Iterations(1)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
}

void prepareSource(const BenchData& data, int size) {
  if (!data.own()) return;
  fs::remove_all(data.live());
  fs::create_directories(data.live());
  fs::copy(data.data() / "tree" / std::to_string(size), data.live() / "src",
           fs::copy_options::recursive);
}

// Whether both hold the same number of entries, and some. A merge does not tell it.
bool isCopied(const fs::path& source, const fs::path& copy) {
  std::error_code missing;
  const auto entries = [&](const fs::path& folder) {
    const fs::recursive_directory_iterator walk(folder, missing);
    return std::distance(walk, fs::recursive_directory_iterator());
  };
  return entries(source) > 0 && entries(source) == entries(copy) && !missing;
}

void freshCopy(benchmark::State& state, const BenchData& data, int size) {
  prepareSource(data, size);
  for (auto _ : state)
    if (!InstallUtil::copyFolderFrom(data.live() / "src", data.live() / "copy"))
      state.SkipWithError("not copied");
}

void mergeCopy(benchmark::State& state, const BenchData& data, int size) {
  prepareSource(data, size);
  if (data.own()) fs::copy(data.live() / "src", data.live() / "copy", fs::copy_options::recursive);
  for (auto _ : state)
    benchmark::DoNotOptimize(
        InstallUtil::copyFolderFrom(data.live() / "src", data.live() / "copy"));
  if (!isCopied(data.live() / "src", data.live() / "copy")) state.SkipWithError("not copied");
}

// `size` is that of each of the twenty files.
void bigCopy(benchmark::State& state, const BenchData& data, int size) {
  const fs::path copy = data.data() / "bigcopy";
  if (data.own()) fs::remove_all(copy);
  for (auto _ : state)
    if (!InstallUtil::copyFolderFrom(data.data() / "big" / ("20x" + std::to_string(size)), copy))
      state.SkipWithError("not copied");
}

}  // namespace

void registerCopies(const BenchData& data) {
  for (const int size : data.sizes("tree", "", "")) {
    registerOnce("fresh_copy/" + std::to_string(size), freshCopy, data, size);
    registerOnce("merge_copy/" + std::to_string(size), mergeCopy, data, size);
  }
  for (const int size : data.sizes("big", "20x", "")) {
    // Whoever asked for a total that twenty does not divide got files rounded down, and looks for
    // the total.
    const int names = data.own() ? 1 : 20;
    for (int total = size * 20; total < size * 20 + names; ++total)
      registerOnce("fresh_copy/big" + std::to_string(total), bigCopy, data, size);
  }
}

}  // namespace installer::bench
