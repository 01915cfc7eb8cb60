// A display of a run that shows nothing. What it simplifies: nothing is painted and no event is handled.
#pragma once
#include "programmer/Progress.h"

namespace tarnwick::test {

struct UnseenProgress : IProgress {
  void Label(const std::string&) override {}
  void Bar(double) override {}
  void Caption(const std::string&) override {}
  void Rest() override {}
  void Busy(bool) override {}
  void Status() override {}
};

}  // namespace tarnwick::test
