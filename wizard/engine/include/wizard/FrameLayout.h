// The arithmetic of the frame's layout, without a window.
#pragma once

#include <cstdint>

namespace tarnwick {

/// The larger of two; on equal values `a`.
constexpr std::int32_t MaxOf(std::int32_t a, std::int32_t b) {
  return a >= b ? a : b;
}

struct FrameSize {
  std::int32_t width = 0;
  std::int32_t height = 0;
};

struct FrameRect {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t Right() const { return left + width; }
  std::int32_t Bottom() const { return top + height; }
};

/// Where everything goes, in device-independent pixels.
struct FrameLayout {
  FrameRect picSplash;
  FrameRect picPage;
  std::int32_t bevelLeft = 0;
  std::int32_t bevelRight = 0;
  std::int32_t bevelTop = 0;  ///< The upper line; the lower one stands one pixel below.
  FrameRect cmdHelp;
  FrameRect cmdStepBack;
  FrameRect cmdStepFwd;
  FrameRect cmdTerminate;
  FrameSize client;  ///< Inside of the frame, without the window's border and title bar.
};

/// Lays the frame out round a page. `button` is the size of each of the four buttons.
FrameLayout LayOut(FrameSize splash, FrameSize button, FrameSize page);

}  // namespace tarnwick
