// Other processes, and this one begun anew.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/seam.h"

namespace tarnwick::process {

/// A command and its arguments, handed on as they are: no shell reads them.
using Command = std::vector<std::string>;

/// Starts a command, whose first word is the path of a program, that outlives this process and of which
/// nothing is seen. Its standard input ends when this process does, however that comes. False when it could
/// not be started.
bool StartFollower(const Command& command);

/// What starts a follower in the system's place, where `Seam<Starter>` has one.
struct Starter {
  std::function<bool(const Command&)> start;
};

/// A process that ends with this object, and with this process. What it writes to standard error is not
/// shown.
class Child {
 public:
  Child() = default;
  ~Child() { Stop(); }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  /// Starts a command whose input and output are the other end of this object. Whether the command is there
  /// to run shows at the first `Receive`.
  std::error_code Start(const Command& command);
  /// Sends text to its input. False when it takes none.
  bool Send(std::string_view text);
  /// Appends to `text` what it wrote. False when it wrote nothing within `limit`, or has ended.
  bool Receive(std::string& text, std::chrono::milliseconds limit);
  /// Asks it to end, in order, and waits until it has. Its exit status; -1 when there is none to tell.
  int Stop();

 private:
  int mProcess = -1;
  int mSocket = -1;
};

/// A program started beside this one, with its input and output. It goes on when its object goes.
class Beside {
 public:
  std::error_code Start(const Command& command);
  /// True until it has ended.
  bool Runs();
  /// How it ended: its exit status, -1 where a signal ended it.
  int Status() const { return mStatus; }
  /// Ends it at once.
  void Kill();

 private:
  int mProcess = -1;
  int mStatus = -1;
};

/// Runs the program `path` in the place of this one, with the same arguments; nothing of this one is run
/// down. Returns only where that fails, with the cause.
std::error_code Become(const std::filesystem::path& path);

}  // namespace tarnwick::process
