#include <benchmark/benchmark.h>

#include "Benchmarks.h"
#include "hotfix/formats/InstallManifest.h"

namespace installer::bench {

static void rewrite(benchmark::State& state, const std::string& file, const std::string& saved) {
  for (auto _ : state) {
    InstallManifest manifest(file);
    if (manifest.readError()) return state.SkipWithError("not read");
    if (!manifest.replaceInstallerRootWith("file:/Volumes/Pkg/hotfix.pkg") ||
        !manifest.saveInstallManifestAs(saved))
      return state.SkipWithError("not rewritten");
  }
}

void registerManifests(const BenchData& data) {
  for (const int size : data.sizes("manifest", "", ".xml")) {
    const std::string file = data.data() / "manifest" / (std::to_string(size) + ".xml");
    const std::string saved = data.live() / "out.xml";
    benchmark::RegisterBenchmark(
        ("manifest_rewrite/" + std::to_string(size)).c_str(),
        [file, saved](benchmark::State& state) { rewrite(state, file, saved); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  }
}

}  // namespace installer::bench
