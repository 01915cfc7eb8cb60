// A release that is fetched, swapped, started and taken back by real processes, one of which is killed at one
// of its calls of the system. The judge is the next start: old or new, never mixed, never none.
//
//   update-campaign PLAYER [--runs N] [--seed N] [--only KIND --run N]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "Tracer.h"
#include "platform/files.h"
#include "support/SignedRelease.h"
#include "support/InMemory.h"
#include "support/TempFolder.h"
#include "webupdate/Journal.h"

using namespace tarnwick;
using namespace tarnwick::test;

namespace {

namespace fs = std::filesystem;

/// What is played: the release that is offered, and what runs.
struct Kind {
  const char* name;
  const char* tail;  ///< Of the new program: "" runs, " torn" cannot, " dies" before its first page.
  bool two;          ///< A second instance begins at some call of the first.
};
constexpr Kind kKinds[] = {{"good", "", false},
                           {"good-two", "", true},
                           {"torn", " torn", false},
                           {"dies", " dies", false},
                           {"dies-two", " dies", true}};

class Stage {
 public:
  Stage(const fs::path& player, const Kind& kind) : mKind(kind), mPlayer(ReadFile(player)) {
    mOffer.Add("Tarnwick.EXE", "2.2.5", mPlayer + "#2.2.5" + kind.tail);
    mOffer.Add("Tarnwick.DLL", "2.2.5", "library#2.2.5");
    mOffer.Add("Notes.htm", "2026-02-03", "new notes");
    mList = mOffer.Text();
  }

  void Prepare() {
    fs::remove_all(mHome);
    fs::create_directories(mHome / "site");
    WriteFile(mHome / "Tarnwick", mPlayer + "#2.2.4");
    fs::permissions(mHome / "Tarnwick", fs::perms(0755));
    WriteFile(mHome / "Tarnwick.so", "library#2.2.4");
    WriteFile(mHome / "key", KeyText(mOffer.keys.open));
    for (const auto& [name, content] : mOffer.contents) WriteFile(mHome / "site" / name, content);
    WriteFile(mHome / "site/list.txt", mList);
  }

  /// Fetches, and whatever follows from that. The calls that were made.
  int Play(int killAt) {
    const std::string program = (mHome / "Tarnwick").string();
    std::vector<std::vector<std::string>> commands{{program, "fetch"}};
    if (mKind.two) commands.push_back({program, killAt % 2 == 0 ? "fetch" : "late"});
    return RunTraced(mHome.string(), commands, killAt, killAt * 7 % mCalls);
  }

  /// Starts the program a few times more, undisturbed. Empty when all is well.
  std::string Judge() {
    const std::string program = (mHome / "Tarnwick").string();
    // One that dies may do so twice before it is taken back.
    for (const std::string& start : {std::string("next"), std::string("second"), std::string("third")}) {
      fs::remove(mHome / "shown");
      if (RunTraced(mHome.string(), {{program}}, 0) < 0) return start + " start hangs";
      const std::string shown = ReadFile(mHome / "shown");
      if (shown.empty()) return start + " start shows nothing";
      mNew = shown.ends_with("2.2.5 2.2.5\n");
      if (!mNew && !shown.ends_with("2.2.4 2.2.4\n")) return start + " start shows " + shown;
    }
    if (mNew != (ReadFile(mHome / "Notes.htm") == "new notes")) return "the notes are of another release";
    if (mNew && mKind.tail[0] != '\0') return "a release that does not run stayed";
    for (const auto& each : fs::directory_iterator(mHome)) {
      const std::string name = each.path().filename();
      if (name.ends_with(".journal") || (each.is_directory() && name.starts_with(kUpdatePrefix)))
        return "left: " + name;
    }
    return {};
  }
  /// No process has ever had program and library of two releases.
  std::string JudgeShown() const {
    const std::string shown = ReadFile(mHome / "shown");
    for (std::size_t at = 0; at + 12 <= shown.size(); at += 12)
      if (shown.substr(at, 5) != shown.substr(at + 6, 5)) return "a process had " + shown.substr(at, 11);
    return {};
  }
  bool IsNew() const { return mNew; }
  /// Behind a fetch that nobody disturbed the new program runs, started by the script, which is gone.
  std::string JudgeUndisturbed() const {
    const bool isNew = ReadFile(mHome / "shown").ends_with("2.2.5 2.2.5\n");
    if (!isNew && mKind.tail[0] == '\0') return "the new program was not started";
    for (const char* const left : {"X", "Y", "WebUpdate.sh"})
      if (fs::exists(mHome / left)) return std::string("left: ") + left;
    return {};
  }
  /// How many calls the undisturbed fetch makes, with all that follows.
  int CountCalls() {
    Prepare();
    return mCalls = RunTraced(mHome.string(), {{(mHome / "Tarnwick").string(), "fetch"}}, 0);
  }

 private:
  const Kind& mKind;
  std::string mPlayer;
  SignedRelease mOffer;
  std::string mList;
  TempFolder mFolder{InMemory()};
  fs::path mHome = mFolder / "$(touch X) 'new' \"one\" ;`touch Y` *";  ///< Nothing of it is for a shell.
  int mCalls = 1;
  bool mNew = false;
};

struct Counts {
  int runs = 0, fresh = 0, old = 0, bad = 0;
};

void PlayOne(Stage& stage, const Kind& kind, int killAt, Counts& counts) {
  stage.Prepare();
  std::string wrong = stage.Play(killAt) < 0 ? "hangs" : "";
  if (wrong.empty()) wrong = stage.JudgeShown();
  if (wrong.empty()) wrong = stage.Judge();
  ++counts.runs;
  ++(stage.IsNew() ? counts.fresh : counts.old);
  if (wrong.empty()) return;
  ++counts.bad;
  std::printf("FAILED: %s; again with --only %s --run %d\n", wrong.c_str(), kind.name, killAt);
}

int Option(int argc, char** argv, const char* name, int standard) {
  for (int i = 2; i + 1 < argc; ++i)
    if (std::strcmp(argv[i], name) == 0) return std::atoi(argv[i + 1]);
  return standard;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);  // So that there is a display.
  const int runs = Option(argc, argv, "--runs", 3000), run = Option(argc, argv, "--run", -1);
  std::mt19937 random(static_cast<unsigned>(Option(argc, argv, "--seed", 1)));
  int bad = 0;
  for (const Kind& kind : kKinds) {
    const char* only = nullptr;
    for (int i = 2; i + 1 < argc; ++i)
      if (std::strcmp(argv[i], "--only") == 0) only = argv[i + 1];
    if (only != nullptr && std::strcmp(only, kind.name) != 0) continue;
    Stage stage(argv[1], kind);
    // A second instance has as many again.
    const int calls = stage.CountCalls() * (kind.two ? 2 : 1);
    Counts counts;
    if (const std::string wrong = stage.JudgeUndisturbed(); !wrong.empty()) {
      ++counts.bad;
      std::printf("FAILED: undisturbed: %s\n", wrong.c_str());
    }
    const int mine = runs / static_cast<int>(std::size(kKinds));
    for (int i = 0; i < mine && run < 0; ++i) {
      // Each call where there are runs enough, else some of them.
      const bool each = i < calls && mine >= calls;
      PlayOne(stage, kind, each ? i + 1 : 1 + static_cast<int>(random() % static_cast<unsigned>(calls)),
              counts);
    }
    if (run >= 0) PlayOne(stage, kind, run, counts);
    std::printf("%-10s %5d calls, %5d runs: %5d new, %5d old, %d bad\n", kind.name, calls, counts.runs,
                counts.fresh, counts.old, counts.bad);
    bad += counts.bad;
  }
  return bad == 0 ? 0 : 1;
}
