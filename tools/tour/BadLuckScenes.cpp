#include "BadLuckScenes.h"

namespace tarnwick::tour {
namespace {

/// Bytes after which the cable comes off: well inside of a run.
constexpr int kInAVerify = 2500;
constexpr int kInProgramming = 6000;

void LoseCableInVerify(Director& director, MountProcess& mount) {
  director.Scene([&] {
    mount.PullCable(kInAVerify);
    director.Expect({"Error Verifying Data at Address: ", QMessageBox::Retry, "cable-in-verify",
                     [&mount] { mount.PlugCable(); }});
    director.Expect({"Contents are Identical", QMessageBox::Ok, "identical-after-all"});
    director.Press("cmdVerify");
  });
}

void LoseCableInProgramming(Director& director, MountProcess& mount, const std::function<void()>& written) {
  director.Scene([&] {
    mount.PullCable(kInProgramming);
    director.Expect({"An Error occurred Programming Data at Address: ", QMessageBox::Yes,
                     "cable-in-programming", [&mount] { mount.PlugCable(); }});
    director.Expect(
        {"Programming Complete", QMessageBox::Ok, "complete-after-all", [&mount] { mount.CyclePower(); }});
    director.Press("cmdProgram");
  });
  director.Scene(written);
}

void StopARun(Director& director, MountProcess& mount, const std::function<void()>& written) {
  director.Scene([&] {
    mount.PullCable(kInProgramming);
    director.Expect({"An Error occurred Programming Data at Address: ", QMessageBox::No, "give-up",
                     [&mount] { mount.PlugCable(); }});
    director.Expect({"Programming Cancelled by User", QMessageBox::Ok, "given-up"});
    director.Press("cmdProgram");
  });
  director.Scene([&] {
    director.Picture("page-4-stopped");
    director.Expect({"[AZM(RA) Motor] Warning: Motor Controller model can not be determined.", QMessageBox::Yes,
                     "unknown-model"});
    director.Expect(
        {"Programming Complete", QMessageBox::Ok, "complete-at-last", [&mount] { mount.CyclePower(); }});
    director.Press("cmdProgram");
  });
  director.Scene(written);
}

}  // namespace

void LoseCableInRuns(Director& director, MountProcess& mount, const std::function<void()>& written) {
  LoseCableInVerify(director, mount);
  LoseCableInProgramming(director, mount, written);
  StopARun(director, mount, written);
}

void LoseCableBeforeOpening(Director& director, MountProcess& mount) {
  director.Scene([&] { director.Press("cmdStepBack"); });
  director.Scene([&] {
    director.Picture("page-3-done");
    director.Press("cmdStepBack");
  });
  director.Scene([&] {
    mount.PullCable(1);
    director.Expect({"No Telescope found on COM5", QMessageBox::Ok, "cable-before-opening"});
    director.Press("cmdStepFwd");
  });
  director.Scene([&] {
    mount.PlugCable();
    director.Press("cmdStepFwd");
  });
}

}  // namespace tarnwick::tour
