// A pseudo terminal, at which this process is the device: the simulated mount's end of the line.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <system_error>
#include <vector>

namespace tarnwick {

/// The same terminal, whoever opens and closes it meanwhile, until it vanishes.
class PseudoTerminal {
 public:
  PseudoTerminal() = default;
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  /// Makes the terminal and, unless `link` is empty, a symbolic link to it there, in place of one
  /// that was left over. On an error `what` names what it is about.
  std::error_code Open(const std::filesystem::path& link, std::string& what);

  /// The terminal goes as an adapter does that is unplugged: who has it open is hung up, and its link goes.
  void Vanish();
  /// It is there again under another name, with its link.
  std::error_code Appear();

  /// The path that programs open.
  const std::string& Path() const { return mPath; }
  /// The speed, in bits per second, that the other end is set to.
  int Speed() const;
  /// What came in; empty when nothing did.
  std::vector<std::uint8_t> Read();
  /// Bytes that nobody takes are dropped, as on a line.
  void Write(std::span<const std::uint8_t> bytes);
  /// A program that was killed leaves the terminal marked as exclusive: takes the mark off when
  /// nobody holds the terminal's lock any more. To be called now and then.
  void ClearStaleMark();

 private:
  friend class Attendant;
  std::error_code Make();

  int mMaster = -1;
  int mSlave = -1;  ///< Held open, so that the terminal does not hang up between two programs.
  std::string mPath;
  std::filesystem::path mLink;    ///< There while it leads to the terminal.
  std::filesystem::path mWanted;  ///< Where it is put.
};

/// What a program waits for that serves a terminal and takes commands from its standard input. One at a time:
/// it takes the process's ending signals over, so that the program can end in order, and makes short waits
/// exact.
class Attendant {
 public:
  explicit Attendant(PseudoTerminal& terminal);
  ~Attendant();
  Attendant(const Attendant&) = delete;
  Attendant& operator=(const Attendant&) = delete;

  struct Arrival {
    bool bytes = false;    ///< The terminal has bytes to read.
    bool ending = false;   ///< The process was asked to end.
    bool command = false;  ///< `TakeInput` has something.
    bool Any() const { return bytes || ending || command; }
  };
  /// Waits up to `limit`; a limit of 0 lets other processes run and looks.
  Arrival Wait(std::chrono::microseconds limit);
  /// Appends what stands in the input to `text`. False once the input has ended: it is not looked at again.
  bool TakeInput(std::string& text);

 private:
  PseudoTerminal& mTerminal;
  int mSignals = -1;
  bool mInputEnded = false;
};

}  // namespace tarnwick
