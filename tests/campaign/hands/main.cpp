// Seeded hands on the real window, over the simulated mount on virtual time, before a judge who knows from
// what the hands did what was asked. docs/reliability.md tells what is played and how one visit is repeated.
#include <QApplication>
#include <iostream>
#include <map>

#include "Visit.h"

namespace {

using tarnwick::test::Judge;
using tarnwick::test::Visit;

int gFaults = 0, gRuns = 0, gBoxes = 0;

const Judge& Played(Visit& visit, const std::string& name) {
  const Judge& judge = visit.Play();
  for (const std::string& fault : judge.Faults()) std::cout << name << ": " << fault << "\n";
  gFaults += judge.Faults().empty() ? 0 : 1;
  gRuns += judge.Runs();
  gBoxes += judge.Boxes();
  return judge;
}

/// The accidents alone.
int Replay() {
  for (const Visit::Accident& accident : Visit::kAccidents) {
    Visit visit(1);
    visit.Replay(accident.number);
    const std::string name = "accident " + std::to_string(accident.number);
    const Judge& judge = Played(visit, name);
    const bool asExpected = judge.Runs() == accident.runs && judge.Boxes() == accident.boxes;
    std::cout << name << ": " << judge.Runs() << " runs, " << judge.Boxes() << " boxes"
              << (asExpected ? "\n" : ", which is wrong\n");
    gFaults += asExpected ? 0 : 1;
  }
  return gFaults == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  std::map<std::string, std::uint32_t> options{{"--seed", 1}, {"--visits", 2000}};
  for (int i = 1; i + 1 < argc; i += 2) {
    options[argv[i]] = static_cast<std::uint32_t>(std::stoul(argv[i + 1]));
  }
  tarnwick::test::gTell = options["--tell"] != 0;
  if (options["--replay"] != 0) return Replay();
  for (std::uint32_t i = 0; i < options["--visits"]; ++i) {
    Visit visit(options["--seed"] + i);
    Played(visit, "seed " + std::to_string(options["--seed"] + i));
  }
  std::cout << options["--visits"] << " visits, " << gRuns << " runs, " << gBoxes << " boxes, " << gFaults
            << " visits with a fault\n";
  const bool played = gRuns > 0 || options["--visits"] < 50;  // Hands that begin no run prove nothing.
  return gFaults == 0 && played ? 0 : 1;
}
