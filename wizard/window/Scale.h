// How far the frame and its pages grow with the user's font.
#pragma once

namespace tarnwick {

/// Device-independent pixels at the base font to those at the application's font.
int Scaled(double pixels);

}  // namespace tarnwick
