#include <benchmark/benchmark.h>

#include "Benchmarks.h"
#include "hotfix/formats/JavaProperties.h"

namespace installer::bench {

// A file that cannot be read, for example because it is longer than files may be, has no entries
// either.
static bool isRead(const JavaProperties& properties) {
  return !properties.readError() && !properties.propertyNames().empty();
}

// Loads a file, takes a second one over and saves the result elsewhere, so that the next iteration
// starts from the same files.
static void propertiesRoundtrip(benchmark::State& state, const BenchData& data, int size) {
  const std::string file = data.data() / "props" / std::to_string(size);
  const std::string saved = data.live() / "out.properties";
  if (!isRead(JavaProperties(file + ".properties")) ||
      !isRead(JavaProperties(file + ".merge.properties")))
    return state.SkipWithError("not read");
  for (auto _ : state) {
    JavaProperties properties(file + ".properties");
    const JavaProperties merged(file + ".merge.properties");
    for (const std::string& key : merged.propertyNames())
      (void)properties.setProperty(merged.getPropertyForKey(key), key);  // each has a value
    if (!properties.savePropertiesToFile(saved)) state.SkipWithError("not saved");
  }
}

void registerProperties(const BenchData& data) {
  for (const int size : data.sizes("props", "", ".merge.properties"))
    benchmark::RegisterBenchmark(
        ("properties_roundtrip/" + std::to_string(size)).c_str(),
        [&data, size](benchmark::State& state) { propertiesRoundtrip(state, data, size); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

}  // namespace installer::bench
