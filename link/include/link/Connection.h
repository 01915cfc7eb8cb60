// Opening the chosen port, deciding whether the link may be used for upgrading, and closing it.
#pragma once

namespace tarnwick {

/// Opens the port `gComPort` of the settings and tests the link; a hand control is tested and locked. True
/// when the link is usable. Shows its own messages.
bool OpenConnection();

/// Closes the port, open or not.
void CloseConnection();

/// True while a port is open: from an `OpenConnection` that found a telescope to a `CloseConnection`, or to
/// an `OpenConnection` that failed.
bool IsConnected();

/// Locks the hand control where the link runs through one; on a direct link does nothing.
void LockHandControl();

}  // namespace tarnwick
