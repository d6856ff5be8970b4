#include <benchmark/benchmark.h>

#include "Benchmarks.h"
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

}  // namespace

int main(int argc, char** argv) {
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
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
