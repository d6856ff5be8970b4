#include "faults/PowerCut.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "faults/Disk.h"
#include "faults/Normal.h"
#include "faults/Reports.h"

namespace installer::faults {

namespace {

const std::string kMountPoint = "/Applications";

std::string cutImage(const World& world) {
  return world.host("/cut.img");
}

// From here on what a scenario finds is safe.
void flush(const std::string& folder) {
  const int number = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  (void)syncfs(number);  // a scenario that is not safe shows as violations
  close(number);
}

// Runs until the call, keeps what of the disk is safe then, and ends the run. False when there are
// no disks.
bool cutPower(const Runner& runner, const Scenario& scenario, long point) {
  const World& world = runner.world();
  const Disk disk(world.host("/disk.img"), world.host(kMountPoint));
  if (!disk.isMounted()) return false;
  runner.prepare(scenario);
  flush(world.host(kMountPoint));
  bool copied = false;
  (void)runner.run(scenario, [&](Tracee& program, const Call& /*call*/, long number) {
    if (number != point) return;
    copied = disk.copyTo(cutImage(world));
    program.kill();
  });
  World::endOthers();
  return copied;
}

// A launcher's own files are its own business until the version says that they are there.
bool isLaunchersAlone(const Scenario& scenario, const Files& files, const std::string& text) {
  const std::string home = scenario.bundle + "/Contents/MacOS/rcp";
  const std::string info = contentOf(files, home + "/installInfo.plist");
  const bool vouched = info.find("<string>1.5</string>") != std::string::npos;
  return text.starts_with(scenario.bundle + "/Contents/MacOS/.provisioning_rc") ||
         (!vouched && text.starts_with(home + "/eclipse/plugins/com.kiv.fix_1.5"));
}

std::vector<Violation> judgeDisk(const Scenario& scenario, const Learned& learned,
                                 const Files& files) {
  std::vector<Violation> found = learned.moments.against(withoutStamps(files));
  std::erase_if(found, [&](const Violation& violation) {
    return !violation.text.starts_with(kMountPoint) ||
           (violation.rule == "missing" && mayBeLost(scenario, violation.text)) ||
           isLaunchersAlone(scenario, files, violation.text);
  });
  return found;
}

std::vector<Violation> judgeCut(const Runner& runner, const Scenario& scenario,
                                const Learned& learned, long point) {
  const World& world = runner.world();
  if (!cutPower(runner, scenario, point)) return {{"power", "the disk could not be kept"}};
  const std::string place = world.host(kMountPoint);
  if (!mountDisk(cutImage(world), place)) return {{"power", "the disk can not be mounted again"}};
  Files files = world.files();
  std::erase_if(files, [](const auto& entry) { return entry.first.ends_with("/lost+found"); });
  unmountDisk(place);
  return judgeDisk(scenario, learned, files);
}

Outcome tryCut(const Runner& runner, const Scenario& scenario, const Learned& learned, long point) {
  return {judgeCut(runner, scenario, learned, point),
          learned.calls.at(static_cast<std::size_t>(point - 1)).text};
}

std::optional<std::string> refused(const Runner& runner) {
  const Disk disk(runner.world().host("/disk.img"), runner.world().host(kMountPoint));
  if (disk.isMounted()) return std::nullopt;
  return "files can not be mounted as disks here (loop devices, mkfs.ext4)";
}

}  // namespace

Kind powerCutKind() {
  return {.name = "power",
          .about = "the power goes before the call; the disk is looked at",
          .points =
              [](const Scenario&, const Learned& learned) {
                return callsThat(learned, [](const LoggedCall& call) {
                  return call.effect == Effect::changing;
                });
              },
          .tried = tryCut,
          .refused = refused};
}

}  // namespace installer::faults
