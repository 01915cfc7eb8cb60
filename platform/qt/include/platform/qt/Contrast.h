// How well a colour is told from the one behind it.
#pragma once

#include <QColor>
#include <algorithm>
#include <cmath>

namespace tarnwick::qt {

/// What text needs to be read by most who see little.
inline constexpr double kReadable = 4.5;

/// From 0 for black to 1 for white, as the eye takes it.
inline double Luminance(const QColor& colour) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

/// From 1 for the same colour to 21 for black and white.
inline double Contrast(const QColor& a, const QColor& b) {
  const double first = Luminance(a), second = Luminance(b);
  return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

/// `text` where it can be read on `ground`, else black or white, of which one always can.
inline QColor ReadableOn(const QColor& ground, const QColor& text) {
  if (Contrast(text, ground) >= kReadable) return text;
  return Contrast(Qt::black, ground) >= kReadable ? QColor(Qt::black) : QColor(Qt::white);
}

}  // namespace tarnwick::qt
