// The commands of tarnwick-mount on standard input.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "mount/Faults.h"
#include "mount/Line.h"
#include "mount/Mount.h"

namespace tarnwick::mount {

class Console {
 public:
  /// All must outlive the console.
  Console(Mount& mount, Line& line, Faults& faults) : mMount(mount), mLine(line), mFaults(faults) {}

  /// Carries one line out and gives the lines to answer, each ended by a line feed: "ok", "error" and
  /// what is wrong, or lines of text ended by "end". What the commands are, `Usage` tells.
  std::string Execute(std::string_view line);
  /// True once "quit" came.
  bool Quit() const { return mQuit; }

 private:
  using Words = std::vector<std::string_view>;
  std::string State(const Words& words);
  std::string Dump(const Words& words);
  std::string SetLine(const Words& words);
  std::string SetLink(const Words& words);
  std::string Fault(const Words& words);
  std::string Poke(const Words& words);
  Device* Find(std::string_view address);

  Mount& mMount;
  Line& mLine;
  Faults& mFaults;
  bool mQuit = false;
};

}  // namespace tarnwick::mount
