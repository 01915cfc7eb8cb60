// The pseudo terminal of the simulated mount.
#pragma once

#include <filesystem>
#include <string>

#include "tarnwick/Frame.h"

namespace tarnwick::mount {

/// The same terminal for the whole run, through power cycles and whoever opens and closes it.
class Terminal {
 public:
  Terminal() = default;
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// Makes the terminal and, unless `link` is empty, a symbolic link to it there, in place of one
  /// that was left over. False, and the reason in `error`, when that cannot be done.
  bool Open(const std::filesystem::path& link, std::string& error);

  int Descriptor() const { return mMaster; }
  /// The path that programs open.
  const std::string& Path() const { return mPath; }
  /// The speed, in bits per second, that the other end is set to.
  int Speed() const;
  /// What came in; empty when nothing did.
  wire::Bytes Read();
  /// Bytes that nobody takes are dropped, as on a line.
  void Write(wire::ByteView bytes);
  /// A program that was killed leaves the terminal marked as exclusive: takes the mark off when
  /// nobody holds the terminal's lock any more. To be called now and then.
  void ClearStaleMark();

 private:
  int mMaster = -1;
  int mSlave = -1;  ///< Held open, so that the terminal does not hang up between two programs.
  std::string mPath;
  std::filesystem::path mLink;
};

}  // namespace tarnwick::mount
