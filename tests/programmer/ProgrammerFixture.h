// What every test of this folder works with: two motor controllers, a package, a watched display.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "firmware/QALclass.h"
#include "programmer/Compatibility.h"
#include "programmer/Progress.h"
#include "support/LinkDouble.h"
#include "support/PackageText.h"
#include "support/ResetGlobals.h"
#include "support/UserDouble.h"

namespace tarnwick::test {

using testing::ElementsAre;
using testing::IsEmpty;
using Calls = std::vector<std::string>;

class ProgressDouble final : public IProgress {
 public:
  void Label(const std::string& text) override { labels.push_back(text), Log("label " + text); }
  void Bar(double) override { Log("bar"); }
  void Caption(const std::string& text) override { captions.push_back(text), Log("caption " + text); }

  void Rest() override { Log("rest"); }
  void Busy(bool busy) override { Log(busy ? "busy" : "free"); }
  void Status() override { Log("status"), RefreshDevices(); }

  std::vector<std::string> labels;
  std::vector<std::string> captions;
  std::function<void(const std::string&)> log;

 private:
  void Log(const std::string& event) {
    if (log) log(event);
  }
};

class ProgrammerFixture : public testing::Test {
 protected:
  ProgrammerFixture() {
    ResetGlobals();
    SetupDevices(0);
  }

  void Load(std::int32_t model, const std::string& hwRev, const std::vector<PackageDevice>& devices) {
    gQAL->LoadQALfile({}, PackageText(model, hwRev, devices));
    MatchPackageDevices();
  }

  /// Reads the table from the devices and forgets the calls that took.
  void Refresh() {
    RefreshDevices();
    link.calls.clear();
  }

  UserDouble user;
  LinkDouble link;
  ProgressDouble progress;
};

}  // namespace tarnwick::test
