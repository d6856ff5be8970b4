#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ctl/trace/Run.h"
#include "ctl/trace/TraceRecord.h"

namespace installer::ctl {

// A run of which lines are still to come, as a RunReader keeps it.
struct UnfinishedRun {
  Run run;
  std::int64_t beganAt = 0;         // the second of the year
  std::size_t lines = 0;            // behind the one that begins the run
  std::size_t instancesToPass = 0;  // that are made before the untouched instance's update
  bool hasPassedChecks = false;
  bool isUpdated = false;  // the untouched instance's update has begun
  std::size_t passes = 0;  // of the workflow that have begun
  std::size_t passesWanted = 1;
  bool isPrepared = false;            // the last pass has got its manifest in place
  bool isRecorded = false;            // the last pass has come to the record
  bool hasCome = false;               // to what ends every run that gets there
  std::optional<Ending> told;         // by a line of its own
  std::optional<Problem> cause;       // of that ending
  std::optional<Ending> failedCheck;  // the ending that it leads to; the recovery comes before it
  std::optional<Problem> causeOfCheck;
  std::optional<Problem> packageLack;  // what the package lacks to name an instance
  std::optional<Problem> firstError;   // of the run, later of the check or the pass, at last of
                                       // provisioning
};

// Makes a run of the lines of its trace, in bounded memory. Of several runs in one file the last
// that begins counts; other processes' lines do not belong to it.
class RunReader {
 public:
  // `year` is that of the file's last change.
  explicit RunReader(int year) : _year(year) {}

  void add(std::string_view line);

  // The run as far as it is known by now; nullopt when no line begins one.
  std::optional<Run> run() const;
  // Lines that are none of the installer's, and those of other runs.
  std::size_t otherLines() const { return _otherLines; }
  std::size_t lines() const { return _lines; }

 private:
  void begin(const TraceRecord& record);
  void take(const TraceRecord& record);
  void takeProblem(const TraceRecord& record);
  void takeEnding(const Problem& problem);
  void takeFact(std::string_view text);
  void takeStep(std::string_view text);
  void takePath(std::string_view text);
  void failCheck();
  void start(StepKind kind);
  void startPass();

  int _year;
  std::optional<UnfinishedRun> _state;
  std::size_t _lines = 0;
  std::size_t _otherLines = 0;
};

}  // namespace installer::ctl
