// How a run of tarnwick-flash ended, as its exit status tells.
#pragma once

namespace tarnwick::flash {

/// One number for each kind of ending. They are told in --help and in the manual page, and stay as they are.
enum class Exit {
  Done = 0,
  Refused = 1,     ///< Before anything was touched: all devices are as they were.
  WrongUse = 2,    ///< The command line makes no sense, or output cannot be written.
  Differs = 3,     ///< Verified, and the contents differ.
  Stopped = 4,     ///< A device needs another run, or a chosen one was not reached.
  LineFailed = 5,  ///< No port, no telescope, or a line that went.
  SiteFailed = 6,  ///< The update site was not reached, or what it gave could not be used or kept.
};

}  // namespace tarnwick::flash
