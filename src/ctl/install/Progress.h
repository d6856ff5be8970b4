#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "ctl/Output.h"
#include "ctl/install/Outcome.h"
#include "ctl/plan/Plan.h"
#include "ctl/trace/Run.h"

namespace installer::ctl::install {

// Tells how far a run has come.
class Progress {
 public:
  enum class Form {
    none,
    line,   // one that is written over itself, on a terminal
    lines,  // "installer:PHASE:<words>" and "installer:%<number>", for front ends
  };

  // `phases`: how many there will be, as far as that can be known.
  Progress(Form form, Output& out, std::size_t columns, std::size_t phases)
      : _form(form), _out(out), _columns(columns), _phases(phases) {}

  bool isWanted() const { return _form != Form::none; }
  // `running`: how long the installer has been at work.
  void show(const Run& run, std::chrono::seconds running);
  void end(const Outcome& outcome);

 private:
  void showLines(const Run& run);
  void writeOver(std::string text);

  const Form _form;
  Output& _out;
  const std::size_t _columns;
  const std::size_t _phases;
  std::size_t _told = 0;  // phases
  std::size_t _part = 0;  // per cent, as told last
  std::string _shown;     // on the terminal
};

// The phases of the planned run.
std::size_t phasesOf(const Plan& plan);

}  // namespace installer::ctl::install
