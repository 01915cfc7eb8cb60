#include "widgets/Scale.h"

#include <QApplication>
#include <QFontInfo>
#include <algorithm>
#include <cmath>

namespace tarnwick {
namespace {

/// The font height, in pixels, that the told layout numbers hold for.
constexpr double kBaseFontPixels = 11.0;

}  // namespace

int Scaled(double pixels) {
  const double font = QFontInfo(QApplication::font()).pixelSize();
  return static_cast<int>(std::lround(pixels * std::max(1.0, font / kBaseFontPixels)));
}

int Unscaled(int pixels) {
  return static_cast<int>(std::lround(pixels * 1000.0 / Scaled(1000)));
}

}  // namespace tarnwick
