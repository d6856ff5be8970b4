#include <benchmark/benchmark.h>

#include "Benchmarks.h"
#include "hotfix/util/InstallUtil.h"

namespace installer::bench {
namespace {

namespace fs = std::filesystem;

void makeAllWrong(const fs::path& root) {
  for (const auto& entry : fs::recursive_directory_iterator(root))
    fs::permissions(entry.path(), entry.is_directory() ? fs::perms(0755) : fs::perms(0644));
}

// For the console user, whom USER names. Without the right to give files away every entry keeps its
// owner and group, which the label tells.
void changeAttributes(benchmark::State& state, const BenchData& data, int size, bool cold) {
  const fs::path root = data.data() / "attrs" / std::to_string(size);
  if (data.own()) {
    (void)InstallUtil::changeAttributesForDirectory(root);  // a start, not what is measured
    if (cold) makeAllWrong(root);
  }
  bool allChanged = true;
  for (auto _ : state) allChanged &= InstallUtil::changeAttributesForDirectory(root);
  if (!allChanged) state.SetLabel("not every change succeeded");
}

}  // namespace

void registerAttributes(const BenchData& data) {
  for (const int size : data.sizes("attrs", "", ""))
    for (const bool cold : {true, false}) {
      auto* benchmark = benchmark::RegisterBenchmark(
          ("change_attributes/" + std::to_string(size) + (cold ? "/cold" : "/warm")).c_str(),
          [&data, size, cold](benchmark::State& state) {
            changeAttributes(state, data, size, cold);
          });
      benchmark->Unit(benchmark::kMillisecond)->UseRealTime();
      // Whatever was changed once is right for the next one.
      if (cold) benchmark->Iterations(1);
    }
}

}  // namespace installer::bench
