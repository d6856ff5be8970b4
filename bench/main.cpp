#include <benchmark/benchmark.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "Benchmarks.h"
#include "MadeData.h"
#include "platform/Platform.h"
#include "platform/SystemLog.h"

namespace {

// Takes every line and forgets it: measuring must not fill the machine's own log.
class ForgetfulLog : public installer::SystemLog {
 public:
  void write(installer::LogLevel /*level*/, std::string_view message) override {
    benchmark::DoNotOptimize(message.data());
  }
  int addFile(int /*descriptor*/) override { return 0; }
  void removeFile(int /*descriptor*/) override {}
};

// What this process held at most, in KiB, from Linux's own book-keeping; nothing elsewhere.
void tellPeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmHWM:")) std::cerr << line << '\n';
}

// bench make-data FOLDER KIND=SIZE[,SIZE]...
int makeDataAsAsked(const std::vector<std::string>& arguments) {
  installer::bench::DataSizes sizes;
  const bool isUnderstood =
      arguments.size() > 2 &&
      std::all_of(arguments.begin() + 2, arguments.end(),
                  [&](const auto& text) { return installer::bench::takeSizes(text, sizes); });
  if (!isUnderstood) {
    std::cerr << "usage: bench make-data FOLDER KIND=SIZE[,SIZE]...\n";
    return 2;
  }
  installer::bench::makeData(arguments[1], sizes);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (!arguments.empty() && arguments[0] == "make-data") return makeDataAsAsked(arguments);

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

  ForgetfulLog log;
  installer::Platform platform = installer::Platform::current();
  platform.log = &log;
  const installer::ScopedPlatform scope(platform);

  const installer::bench::BenchData data;
  installer::bench::registerProperties(data);
  installer::bench::registerPropertyLists(data);
  installer::bench::registerManifests(data);
  installer::bench::registerCopies(data);
  installer::bench::registerAttributes(data);
  installer::bench::registerRunningCheck(data);
  installer::bench::registerBaseVersion(data);
  installer::bench::registerReferences(data);
  benchmark::RunSpecifiedBenchmarks();
  tellPeakMemory();
  benchmark::Shutdown();
  return 0;
}
