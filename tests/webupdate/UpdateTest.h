// A program's folder, a site that offers it a release, and what becomes of both.
#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/process.h"
#include "settings/Settings.h"
#include "support/HttpDouble.h"
#include "support/InMemory.h"
#include "support/LinkDouble.h"
#include "support/SignedRelease.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/Journal.h"
#include "webupdate/ProgramInstaller.h"
#include "webupdate/Touch.h"

namespace tarnwick::test {

namespace fs = std::filesystem;

class UpdateTest : public testing::Test {
 protected:
  UpdateTest() {
    link.dllVersion = {1, 9, 9};
    DomainName = "site", DomainPath = "/at";
    Reset();
  }
  /// The folder as the release before left it; version 2.2.4 runs.
  void Reset() {
    TrustKey(offer.keys.open);
    program::Set({home, "My Updater", 2, 2, 4});
    fs::remove_all(home);
    fs::create_directories(home);
    for (const char* const name : {"My Updater", "Tarnwick.so", "Notes.htm"}) {
      WriteFile(home / name, "#old");
      fs::permissions(home / name, fs::perms(name[0] == 'N' ? 0640 : 0755));
    }
    Touch(home / "Notes.htm", *ReadDate("2024-05-06"));
  }
  void Add(const std::string& name, const std::string& version) {
    offer.Add(name, version, name + "#new");
    site.replies["/at/" + name] = name + "#new";
  }
  void OfferAll() {
    Add("Tarnwick.EXE", "2.2.5");
    Add("Tarnwick.DLL", "2.0.0");
    Add("Notes.htm", "2026-02-03");
    Add("Added.htm", "2026-02-03");
  }
  bool Check() { return Check(offer.Text()); }
  bool Check(const std::string& text) {
    catalogue.Load(text, 0);
    return CheckForNewProgram(catalogue);
  }
  WhyNot Install() {
    const auto ignore = [](const auto&) {};
    ProgramInstaller installer({ignore, ignore, ignore, ignore});
    const bool installed = installer.InstallNewProgram(catalogue);
    EXPECT_EQ(installed, installer.Why().refusal == Refusal::None);
    return installer.Why();
  }
  /// What lies in the folder and does not belong there.
  std::vector<std::string> Left() const {
    std::vector<std::string> left;
    for (const auto& each : fs::directory_iterator(home)) {
      const std::string name = each.path().filename();
      if (std::string("My Updater Tarnwick.so Notes.htm WebUpdate.lock WebUpdate.sh").find(name) ==
          std::string::npos)
        left.push_back(name);
    }
    return left;
  }

  TempFolder folder{InMemory()};
  fs::path home = folder / "a b";
  UserDouble user;
  LinkDouble link;
  HttpDouble site;
  SignedRelease offer;
  Catalogue catalogue;
  std::vector<process::Command> started;
  bool starts = true;
  const InPlace<process::Starter> starter{process::Starter{[this](const process::Command& command) {
    started.push_back(command);
    return starts;
  }}};
};

}  // namespace tarnwick::test
