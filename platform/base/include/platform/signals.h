// What the system has to say to a program without windows: that it is to end, or that its terminal has gone.
#pragma once

namespace tarnwick::signals {

/// What was asked for since the last look; the stronger of several.
enum class Asked {
  Nothing,
  Interrupt,  ///< The user pressed Ctrl-C.
  End,        ///< The system, or an administrator, wants the process to end.
};

/// From here on nothing of that ends the process: what is asked for is noted, a terminal that goes away and an
/// output that nobody reads any more are passed over. To be called once, first of all.
void Note();

/// What was asked for; the next look finds nothing. Without `Note` always nothing.
Asked Take();

/// True when somebody sits at both ends: standard input and standard error are a terminal.
bool IsAttended();

/// True when standard output is a terminal, so that a line of it can be written over.
bool ShowsTerminal();

}  // namespace tarnwick::signals
