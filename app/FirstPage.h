// Tells when a window has been painted for the first time.
#pragma once

#include <functional>

class QWidget;

namespace tarnwick {

/// Runs `then` once, in the event loop, after `window` has been painted.
void OnFirstPaint(QWidget& window, std::function<void()> then);

}  // namespace tarnwick
