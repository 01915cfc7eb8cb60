// The mount on the port, and the package for it, as the commands need them.
#pragma once

#include <filesystem>
#include <vector>

#include "flash/Commands.h"

namespace tarnwick::flash {

/// Opens the port that the command line, the settings or the one USB adapter names, and reads every device.
/// `Done`, or why there is nothing to work with; the user was told.
Exit ReachMount(const Job& job);

/// The package of the command line, loaded into `gQAL` and held against the devices. Where it came from
/// standard input, it stands in a file of its own until this object goes.
class ChosenPackage {
 public:
  explicit ChosenPackage(const Job& job) : mJob(job) {}
  ~ChosenPackage();
  ChosenPackage(const ChosenPackage&) = delete;
  ChosenPackage& operator=(const ChosenPackage&) = delete;

  /// `Done` when it fits; the user was told otherwise.
  Exit Judge();
  /// Loads the same file again: it may have been put back meanwhile.
  void Reload() const;
  /// The rows that are chosen, of those that the package has an image for. Empty after a message.
  std::vector<std::int32_t> Rows() const;

 private:
  std::filesystem::path Locate();
  std::filesystem::path TakeInput();

  const Job& mJob;
  std::filesystem::path mPath;
  std::filesystem::path mTaken;  ///< The folder of what came from standard input; empty for none.
};

/// A port that can be chosen.
struct Port {
  std::string name;
  std::filesystem::path device;
  bool usb = false;
};
/// The ports of the list that are there.
std::vector<Port> PortsHere();

}  // namespace tarnwick::flash
