#include "faults/Learned.h"

#include "cli/Fixtures.h"
#include "faults/AllocationKind.h"
#include "faults/Normal.h"
#include "faults/Reports.h"
#include "support/linux/PrivateRoot.h"

namespace installer::faults {

namespace {

Action watchingFiles(const Runner& runner, Learned& learned) {
  return [&](Tracee& /*program*/, const Call& call, long /*number*/) {
    if (call.effect == Effect::changing)
      learned.moments.learn(withoutStamps(runner.world().files()));
  };
}

// Takes down each call as well.
Action watching(const Runner& runner, Learned& learned) {
  return [&, watchFiles = watchingFiles(runner, learned)](Tracee& program, const Call& call,
                                                          long number) {
    const int size = call.form->size;
    learned.calls.push_back({program.described(call), program.pathOf(call),
                             program.otherPathOf(call), call.form, call.effect, call.errors,
                             size < 0 ? 0 : call.arguments[static_cast<std::size_t>(size)]});
    watchFiles(program, call, number);
  };
}

// The files as they are when the user has been made their owner.
Files handedOver(Files files) {
  for (auto& [path, entry] : files) {
    entry.mode = 0775;
    entry.owner = test::kAlice;
    entry.group = test::kAdmin;
  }
  return files;
}

// A fault can let a check fail, or pass: what the other path leaves may be there then.
void learnOtherPaths(const Runner& runner, const Scenario& scenario, Learned& learned) {
  for (const Scenario& other : scenario.takenFor) {
    runner.prepare(other);
    const Run run = runner.run(other, watchingFiles(runner, learned));
    learned.moments.learn(withoutStamps(run.files));
  }
}

void learnLaterStarts(const Runner& runner, Scenario scenario, Learned& learned) {
  for (const Files& files : scenario.laterStarts) {
    scenario.files = files;
    runner.prepare(scenario);
    learned.ends.learn(withoutStamps(runner.run(scenario, letBe).files));
  }
}

void countAllocations(const Runner& runner, const Scenario& scenario, Learned& learned) {
  runner.prepare(scenario);
  (void)runner.run(scenario, letBe, allocationVariables(0));  // the count is all that is wanted
  learned.allocations = countedAllocations(runner.world());
}

}  // namespace

std::vector<Violation> learn(const Runner& runner, const Scenario& scenario, Learned& learned) {
  runner.prepare(scenario);
  learned.moments.learn(withoutStamps(scenario.files));
  const Run first = runner.run(scenario, watching(runner, learned));
  learned.files = withoutStamps(first.files);
  learned.complaints = complaintsIn(contentOf(first.files, cli::kTrace));
  learned.moments.learn(learned.files);
  learned.ends.learn(learned.files);
  const Run again = runner.run(scenario, letBe);
  learned.ends.learn(withoutStamps(again.files));
  learned.moments.learn(withoutStamps(again.files));
  learned.moments.learn(withoutStamps(scenario.substitutes));
  learned.moments.learn(withoutStamps(handedOver(scenario.substitutes)));
  learnOtherPaths(runner, scenario, learned);
  learnLaterStarts(runner, scenario, learned);
  countAllocations(runner, scenario, learned);
  return endsAsExpected(scenario, first);
}

}  // namespace installer::faults
