// Measures: what is told at the base font of 11 pixels grows with the user's font.
#pragma once

namespace tarnwick {

/// Device-independent pixels at the base font to those at the application's font.
int Scaled(double pixels);
/// The same for whole pixels.
inline int Pixels(int atBaseFont) {
  return Scaled(atBaseFont);
}
/// Device-independent pixels at the application's font back to those at the base font.
int Unscaled(int pixels);
/// Measures told in twips, 1440 to the inch at any scale: 15 of them are one pixel at the base font.
inline int TwipsToPixels(int twips) {
  return Scaled(twips / 15.0);
}

}  // namespace tarnwick
