#include <benchmark/benchmark.h>

#include "Benchmarks.h"
#include "hotfix/instance/InstanceService.h"

namespace installer::bench {

static void baseVersion(benchmark::State& state, const std::string& rcpHome) {
  for (auto _ : state)
    if (!InstanceService(rcpHome).getBaseVersion()) state.SkipWithError("no base plug-in");
}

// Among how many plug-in folders the base plug-in is looked for.
void registerBaseVersion(const BenchData& data) {
  for (const int size : data.sizes("plugins", "", ""))
    benchmark::RegisterBenchmark(("base_version/" + std::to_string(size)).c_str(),
                                 [home = (data.data() / "plugins" / std::to_string(size)).string()](
                                     benchmark::State& state) { baseVersion(state, home); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

}  // namespace installer::bench
