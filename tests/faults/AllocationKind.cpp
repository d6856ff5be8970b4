#include "faults/AllocationKind.h"

#include <cstdlib>
#include <fstream>
#include <numeric>

#include "support/linux/PrivateRoot.h"

namespace installer::faults {

namespace {

constexpr const char* kCount = "/control/allocations";
constexpr const char* kPlace = "/control/allocation";

std::vector<long> everyAllocation(const Scenario&, const Learned& learned) {
  std::vector<long> points(static_cast<std::size_t>(learned.allocations));
  std::iota(points.begin(), points.end(), 1);
  return points;
}

Action nothing(const Runner&, const Scenario&, long) {
  return letBe;
}

}  // namespace

Kind allocationKind() {
  return {.name = "alloc",
          .about = "one allocation fails",
          .points = everyAllocation,
          .action = nothing,
          .variables = allocationVariables};
}

std::map<std::string, std::string> allocationVariables(long failing) {
  return {{"LD_PRELOAD", test::kAllocationFaultInRoot},
          {"HOTFIX_FAIL_ALLOCATION", std::to_string(failing)},
          {failing == 0 ? "HOTFIX_COUNT_ALLOCATIONS" : "HOTFIX_ALLOCATION_PLACE",
           failing == 0 ? kCount : kPlace}};
}

long countedAllocations(const World& world) {
  long count = 0;
  std::ifstream(world.host(kCount)) >> count;
  return count;
}

std::string placeOfAllocation(const World& world) {
  const std::string own = std::string(test::kProgramInRoot) + "(+";
  std::ifstream stream(world.host(kPlace));
  std::string place = "allocation at";
  for (std::string frame; std::getline(stream, frame);)
    if (frame.starts_with(own))
      place += " " + frame.substr(own.size(), frame.find(')') - own.size());
  return place;
}

}  // namespace installer::faults
