// The link library Tarnwick.so, which holds the whole serial protocol of the telescope's bus.
//
// Calls are synchronous, on the one thread, and the library never calls back. Opening takes 3 s at most, any
// other call 4.5 s, but the end of programming, which compares the memory first, and reads of many words,
// which take as many exchanges as there are 64 words. What a result means differs from call to call and is
// told at each; an argument that is filled keeps its value where the call failed. The wire protocol is in
// docs/link-protocol.md.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/seam.h"

namespace tarnwick {

/// The link library's file, without the ending that the system's libraries have: it lies beside the program.
inline constexpr std::string_view kLinkLibraryName = "Tarnwick";

/// The exports of the link library, without their decoration. `address` is a bus address.
class ILinkLibrary {
 public:
  virtual ~ILinkLibrary() = default;

  /// The library's version: major, minor, build. Zeros when there is no library.
  virtual std::array<std::int32_t, 3> getDllVersion() = 0;
  /// Switches a trace on; `filter` is 4 or 6.
  virtual void debugFilter(std::int32_t filter) = 0;
  /// Opens the port of that name; the empty name closes it. 0: open, telescope present;
  /// -1: cannot open; -8 to -2: no telescope.
  virtual std::int32_t initSerialCommon(const std::string& port) = 0;
  /// 2: the link runs through a hand control; any other value: direct link.
  virtual std::int32_t getSerialMode() = 0;
  /// Locks the hand control. Only in serial mode 2.
  virtual void lockHc() = 0;
  /// 0: the port is the virtual one.
  virtual std::int32_t doTestForSkelmirra() = 0;
  /// 0: the hand control supports upgrading.
  virtual std::int32_t doTestForUpgradeSupport() = 0;
  /// Low 16 bits equal 1: `model` filled.
  virtual std::int32_t getModelCommon(std::int32_t address, std::int32_t& model) = 0;
  /// 0 no response, 1 running, 2 boot mode, 3 program, else unknown. The version is filled when 1.
  virtual std::int32_t getMcStateCommon(std::int32_t address, std::int32_t& major, std::int32_t& minor) = 0;
  /// Nonzero: read from running firmware.
  virtual std::int32_t getHwRevCommon(std::int32_t address, std::int32_t& revision) = 0;
  /// Nonzero: read from the boot loader.
  virtual std::int32_t getHwRevFromBootCommon(std::int32_t address, std::int32_t& revision) = 0;
  /// 0: read. The reverse of the two above.
  virtual std::int32_t getVersionFromBootCommon(std::int32_t address, std::int32_t& version) = 0;
  /// Reads program memory from word `first` to word `last` into `words`, which has room for
  /// `last - first + 1`. 1: filled, each Hi*256+Lo; anything else is a failed read.
  virtual std::int32_t readMcProgMemCommon(std::int32_t address, std::int32_t first, std::int32_t last,
                                           std::span<std::int32_t> words) = 0;
  /// Nonzero: the device left its firmware for boot mode.
  virtual std::int32_t enterBootCommon(std::int32_t address) = 0;
  /// Nonzero: boot mode changed to program state.
  virtual std::int32_t startProgrammingCommon(std::int32_t address) = 0;
  /// Sends one block, an element a byte value: word index high and low byte, then low and high byte
  /// of each word. Nonzero: block written.
  virtual std::int32_t sendDataCommon(std::int32_t address, std::span<const std::int32_t> elements) = 0;
  /// Nonzero: program state ended.
  virtual std::int32_t endProgrammingCommon(std::int32_t address) = 0;
  /// What is known of the line, in lines ended by a line feed: "cause: ...", "speed: ...", "repeats: ...",
  /// each where there is something to tell. Empty where the library has no such export, which need not be
  /// there.
  virtual std::string getLinkNote() { return {}; }
};

/// What the library knows of its line, for a person to read.
struct LinkNote {
  std::string cause;         ///< Why the last opening gave -1 to -8, or why the line went; empty for neither.
  std::int32_t speed = 0;    ///< Bits per second; 0 when no port is open.
  std::int32_t repeats = 0;  ///< Requests sent again since the opening.
};
/// What the library in use tells; nothing where it is one that tells nothing.
LinkNote ReadLinkNote();

/// Name and version of the library that was loaded, or why none could be; empty before the first use.
const std::string& LoadedLibraryText();

/// Loads the link library from the file `path`. One that is missing or lacks an export is not used at
/// all: what comes back then answers each call with its own failure result.
std::unique_ptr<ILinkLibrary> LoadLinkLibrary(const std::filesystem::path& path);

/// Where the link library lies, there or not.
std::filesystem::path LinkLibraryFile();

/// The library in use: the one that `Seam<ILinkLibrary>` has, else the loaded one. Loaded from the program's
/// folder at the first call of this, so that a start that needs no telescope does not pay for it.
ILinkLibrary& Link();

}  // namespace tarnwick
