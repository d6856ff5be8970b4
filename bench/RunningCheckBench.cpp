#include <benchmark/benchmark.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "Benchmarks.h"
#include "hotfix/util/InstallUtil.h"

namespace installer::bench {
namespace {

// Processes that do nothing until they are ended with this object.
class Sleepers {
 public:
  explicit Sleepers(int count) {
    for (int number = 0; number < count; ++number) start();
  }
  Sleepers(const Sleepers&) = delete;
  Sleepers& operator=(const Sleepers&) = delete;
  ~Sleepers() {
    for (const pid_t process : _processes) kill(process, SIGKILL);
    for (const pid_t process : _processes) waitpid(process, nullptr, 0);
  }

 private:
  void start() {
    const pid_t process = fork();
    if (process == 0)
      while (true) pause();
    if (process > 0) _processes.push_back(process);
  }

  std::vector<pid_t> _processes;
};

void runningCheck(benchmark::State& state, const BenchData& data, int count) {
  const Sleepers sleepers(data.own() ? count : 0);
  for (auto _ : state)
    if (InstallUtil::checkBundleIsRunning("/nonexistent/Quillmere.app"))
      state.SkipWithError("something runs there");
}

}  // namespace

// Somebody else's sleepers are counted by whoever started them: every usual number is known.
void registerRunningCheck(const BenchData& data) {
  const std::vector<int> own = {100};
  const std::vector<int> usual = {5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000};
  for (const int count : data.own() ? own : usual)
    benchmark::RegisterBenchmark(
        ("running_check/" + std::to_string(count)).c_str(),
        [&data, count](benchmark::State& state) { runningCheck(state, data, count); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

}  // namespace installer::bench
