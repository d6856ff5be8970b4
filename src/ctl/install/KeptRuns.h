#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ctl/install/Deadline.h"

namespace installer::ctl::install {

// The files of a kept run; its trace has the name that traces always have.
inline constexpr const char* kPlanFile = "plan.json";
inline constexpr const char* kRecordFile = "record.plist";
inline constexpr const char* kResultFile = "result.json";
inline constexpr const char* kOutputFile = "output.txt";

// How much is kept.
struct Retention {
  std::size_t runs = 20;  // the new one among them
  unsigned days = 180;
};

// Why there is no turn, or nothing can be kept.
struct NoTurn {
  bool isBusy = false;
  std::string reason;
};

// The folder of all kept runs, and the turn to install: one process of the machine has it at a
// time. All that happens here trusts nothing but what root alone can change.
class KeptRuns {
 public:
  // Makes the folder when there is none, and waits for the turn until the deadline. Null, with
  // `lack` set, without it.
  [[nodiscard]] static std::unique_ptr<KeptRuns> takeTurn(const std::string& folder,
                                                          const Deadline& deadline, NoTurn& lack);

  const std::string& folder() const { return _folder; }

  // The folders of runs, the oldest first. What has another name, belongs to somebody else or is no
  // folder is none of them.
  std::vector<std::string> all() const;

  // Removes the oldest beside the newest, whatever its name says of its time.
  void makeRoom(const Retention& retention, const std::string& newest) const;

  // Makes the folder of a new run; nullopt, with the reason, when that cannot be done.
  [[nodiscard]] std::optional<std::string> begin(const std::optional<std::string>& bundle,
                                                 std::string& reason) const;

 private:
  KeptRuns(std::string folder, std::shared_ptr<const void> turn)
      : _folder(std::move(folder)), _turn(std::move(turn)) {}

  const std::string _folder;
  const std::shared_ptr<const void> _turn;
};

// "20261122T153012.045Z-Quillmere": the time, and the bundle's name in letters that every shell
// takes. By name the runs are in the order of their times.
std::string nameOfRun(std::chrono::system_clock::time_point time,
                      const std::optional<std::string>& bundle);
bool isNameOfRun(std::string_view name);

}  // namespace installer::ctl::install
