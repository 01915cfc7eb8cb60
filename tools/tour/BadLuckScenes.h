// The scenes in which the cable comes off: while a device is verified, while it is written, and before the
// port is opened. Each is told, and each goes on once the cable is back.
#pragma once

#include <functional>

#include "Director.h"
#include "mount/MountProcess.h"

namespace tarnwick::tour {

using mount::MountProcess;

/// On the page of programming, with all devices chosen and written. They are verified and written once more;
/// `written` is called then.
void LoseCableInRuns(Director& director, MountProcess& mount, const std::function<void()>& written);

/// From the page of programming back to that of the port, and to the page with the packages.
void LoseCableBeforeOpening(Director& director, MountProcess& mount);

}  // namespace tarnwick::tour
