// Packages read: whole runs of qalinfo beside other tools that read the same hex lines, and the loader in
// this process beside a bare scan for line ends.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>

#include "firmware/QALclass.h"
#include "firmware/QalWriter.h"
#include "support/TempFolder.h"

namespace tarnwick::bench {
namespace {

constexpr std::size_t kKilo = 1u << 10;
constexpr std::size_t kMega = 1u << 20;

/// Whole images of 64 KB, one behind the other, until `size` is reached; the last one is cut.
std::string HexLines(std::size_t size) {
  std::string image;
  std::uint32_t state = 1;
  for (std::size_t at = 0; at < 64 * kKilo; at += 16) {
    std::uint8_t bytes[16];
    for (std::uint8_t& byte : bytes)
      byte = static_cast<std::uint8_t>((state = state * 1664525u + 1013904223u) >> 24);
    image += QalHexLine(static_cast<std::uint16_t>(at), bytes);
  }
  std::string lines;
  lines.reserve(size);
  while (lines.size() + image.size() <= size) lines += image;
  const std::size_t line = image.find('\n') + 1;
  return lines.append(image, 0, (size - lines.size()) / line * line);
}

/// `others` devices that want nothing of the block, and one that does.
std::string Package(std::string_view lines, int others = 0) {
  std::string text = "FILEVER=11\r\n";
  if (others > 0) text += "DEVICE_ADDRESS_VERSION=B, 17, OTHER\r\nSTART_HEX=OTHER\r\n:0400000001020304F2\r\n";
  for (int i = 1; i < others; ++i) text += "DEVICE_ADDRESS_VERSION=B, 17, OTHER\r\n";
  if (others > 0) text += ":0400000001020304F2\r\n";
  text += "DEVICE_ADDRESS_VERSION=A, 16, X0102\r\nSTART_HEX=X0102\r\n";
  text.reserve(text.size() + lines.size() + 20);
  return text.append(lines) + "END_HEX=X0102\r\n";
}

struct Tool {
  std::string name;
  std::vector<std::string> command;  ///< "HEX", "QAL" and "OUT" stand for the files, "PART" for a quarter.
};

const Tool kQalinfo = {"qalinfo", {TARNWICK_QALINFO, "--dump", "1", "QAL"}};
const Tool kRemarks = {"remarks", {TARNWICK_QALINFO, "QAL"}};
const Tool kQalmake = {"qalmake",
                       {TARNWICK_QALMAKE, "--model", "5", "--version", "5.14", "--device", "A,16", "--device",
                        "B,17", "--device", "C,18", "--device", "D,19", "OUT.qal", "PART", "PART", "PART",
                        "PART"}};
const Tool kSrecCat = {"srec_cat",
                       {"srec_cat", "-disable-sequence-warnings", "HEX", "-intel",
                        "-contradictory-bytes=ignore", "-redundant-bytes=ignore", "-o", "OUT", "-binary"}};
const Tool kObjcopy = {"objcopy", {"objcopy", "-I", "ihex", "-O", "binary", "HEX", "OUT"}};
const Tool kIntelHex = {
    "intelhex",
    {"/usr/bin/python3", "-c", "import intelhex, sys; intelhex.IntelHex(sys.argv[1]).tobinfile(sys.argv[2])",
     "HEX", "OUT"}};

/// Runs `command` without output; its peak memory in bytes, or nothing when it fails.
double Run(std::vector<std::string> command) {
  std::vector<char*> arguments;
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int fd : {1, 2}) posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const bool started = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage{};
  if (!started || wait4(child, &status, 0, &usage) != child || status != 0) return 0;
  return static_cast<double>(usage.ru_maxrss) * kKilo;
}

void Process(benchmark::State& state, const Tool& tool, const std::filesystem::path& stem) {
  std::vector<std::string> command = tool.command;
  for (std::string& argument : command) {
    if (argument == "HEX") argument = stem.string() + ".hex";
    if (argument == "QAL") argument = stem.string() + ".qal";
    if (argument == "PART") argument = stem.string() + ".part";
    if (argument == "OUT.qal") argument = stem.string() + ".made.qal";
    if (argument == "OUT") argument = stem.string() + "." + tool.name;
  }
  for ([[maybe_unused]] auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    const bool ended = Run(command) > 0;
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    if (!ended) return state.SkipWithError("failed, or is not installed");
  }
}

void Load(benchmark::State& state, int others) {
  const std::string text = Package(HexLines(static_cast<std::size_t>(state.range(0))), others);
  for ([[maybe_unused]] auto _ : state) {
    QALclass package;
    package.LoadQALfile({}, text);
    if (package.ErrorsFound()) return state.SkipWithError("the package does not load");
  }
}

void Scan(benchmark::State& state) {
  const std::string text = Package(HexLines(static_cast<std::size_t>(state.range(0))));
  for ([[maybe_unused]] auto _ : state) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (const void* found = std::memchr(at, '\n', static_cast<std::size_t>(end - at))) {
      at = static_cast<const char*>(found) + 1;
    }
    benchmark::DoNotOptimize(at);
  }
}

/// qalinfo's peak memory on a file of `size` bytes and more, in bytes. The system counts what a process held
/// before it became qalinfo, so this comes first of all, and the file is written in parts.
double PeakMemory(const test::TempFolder& folder, std::size_t size) {
  const std::filesystem::path path = folder / "large.qal";
  const std::string lines = HexLines(4096 * 45);
  std::ofstream file(path, std::ios::binary);
  file << "DEVICE_ADDRESS_VERSION=A, 16\r\n";
  for (std::size_t written = 0; written < size; written += lines.size()) file << lines;
  file.close();
  const double peak = Run({TARNWICK_QALINFO, path.string()});
  std::filesystem::remove(path);
  return peak;
}

void RegisterProcesses(const test::TempFolder& folder) {
  const struct {
    const char* name;
    std::size_t size;
    int runs;
    std::vector<Tool> tools;
  } files[] = {{"image", 4096 * 45, 31, {kQalinfo, kSrecCat, kObjcopy, kIntelHex}},
               {"1MB", kMega, 31, {kQalinfo, kRemarks, kQalmake, kSrecCat}},
               {"64MB", 64 * kMega, 9, {kQalinfo, kSrecCat, kObjcopy}}};
  for (const auto& file : files) {
    const std::string lines = HexLines(file.size);
    const auto stem = folder / file.name;
    test::WriteFile(stem.string() + ".qal", Package(lines));
    test::WriteFile(stem.string() + ".hex", lines + ":00000001FF\r\n");
    test::WriteFile(stem.string() + ".part", HexLines(file.size / 4) + ":00000001FF\r\n");
    for (const Tool& tool : file.tools) {
      benchmark::RegisterBenchmark((tool.name + "/" + file.name).c_str(), Process, tool, stem)
          ->Iterations(1)
          ->UseManualTime()
          ->Repetitions(file.runs);
    }
  }
}

void RegisterLoads() {
  for (const std::size_t size : {64 * kKilo, 64 * kMega, 256 * kMega}) {
    const auto times = static_cast<benchmark::IterationCount>(256 * kMega / size / 4 + 1);
    const auto bytes = static_cast<std::int64_t>(size);
    benchmark::RegisterBenchmark("load", Load, 0)->Arg(bytes)->Iterations(times)->Repetitions(9);
    benchmark::RegisterBenchmark("scan", Scan)->Arg(bytes)->Iterations(times)->Repetitions(9);
  }
  for (const int others : {1, 1000}) {
    benchmark::RegisterBenchmark(("others:" + std::to_string(others)).c_str(), Load, others)
        ->Arg(16 * kMega)
        ->Iterations(1)
        ->Repetitions(101);
  }
}

}  // namespace
}  // namespace tarnwick::bench

int main(int argc, char* argv[]) {
  const tarnwick::test::TempFolder folder;
  const double peak = tarnwick::bench::PeakMemory(folder, 256 * tarnwick::bench::kMega);
  benchmark::RegisterBenchmark("memory",
                               [=](benchmark::State& state) {
                                 while (state.KeepRunning()) state.counters["peak"] = peak;
                               })
      ->Iterations(1)
      ->Repetitions(3);
  tarnwick::bench::RegisterProcesses(folder);
  tarnwick::bench::RegisterLoads();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
