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
void changeAttributes(benchmark::State& state, const BenchData& data, const fs::path& root,
                      bool cold) {
  if (data.own()) {
    (void)InstallUtil::changeAttributesForDirectory(root);  // a start, not what is measured
    if (cold) makeAllWrong(root);
  }
  bool allChanged = true;
  for (auto _ : state) allChanged &= InstallUtil::changeAttributesForDirectory(root);
  if (!allChanged) state.SetLabel("not every change succeeded");
}

// Of each folder of a kind of data: many folders of some files, one of many files, many levels.
void registerShape(const BenchData& data, const char* kind, const std::string& name) {
  for (const int size : data.sizes(kind, "", ""))
    for (const bool cold : {true, false}) {
      auto* benchmark = benchmark::RegisterBenchmark(
          (name + "/" + std::to_string(size) + (cold ? "/cold" : "/warm")).c_str(),
          [&data, root = data.data() / kind / std::to_string(size), cold](benchmark::State& state) {
            changeAttributes(state, data, root, cold);
          });
      benchmark->Unit(benchmark::kMillisecond)->UseRealTime();
      // Whatever was changed once is right for the next one.
      if (cold) benchmark->Iterations(1);
    }
}

}  // namespace

void registerAttributes(const BenchData& data) {
  registerShape(data, "attrs", "change_attributes");
  registerShape(data, "wide", "change_attributes_wide");
  registerShape(data, "deep", "change_attributes_deep");
}

}  // namespace installer::bench
