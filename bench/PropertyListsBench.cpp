#include <benchmark/benchmark.h>

#include "Benchmarks.h"
#include "hotfix/formats/Properties.h"

namespace installer::bench {

static void setKey(benchmark::State& state, const std::string& file, const std::string& saved) {
  for (auto _ : state) {
    Properties store(file);
    if (!store.setProperty("2.0.0", "hotfixVersion")) return state.SkipWithError("not read");
    if (!store.savePropertiesToFile(saved)) return state.SkipWithError("not saved");
  }
  state.SetLabel("written as XML");
}

static void registerForm(const BenchData& data, const std::string& form) {
  const std::string suffix = "." + form + ".plist";
  for (const int size : data.sizes("plist", "", suffix)) {
    const std::string file = data.data() / "plist" / (std::to_string(size) + suffix);
    const std::string saved = data.live() / "out.plist";
    benchmark::RegisterBenchmark(
        ("plist_set_key/" + std::to_string(size) + "/" + form).c_str(),
        [file, saved](benchmark::State& state) { setKey(state, file, saved); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  }
}

void registerPropertyLists(const BenchData& data) {
  registerForm(data, "xml");
  registerForm(data, "bin");
}

}  // namespace installer::bench
