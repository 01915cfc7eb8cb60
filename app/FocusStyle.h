// The style of the program: Fusion, with the focus told at every control that can have it.
#pragma once

#include <QProxyStyle>

namespace tarnwick {

/// Fusion marks buttons and fields that have the focus, but no lists and texts: those get their frame
/// in the highlight colour.
class FocusStyle final : public QProxyStyle {
 public:
  FocusStyle();
  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
};

}  // namespace tarnwick
