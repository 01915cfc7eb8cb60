// The picture in a message box, drawn so that it is crisp at any scale and alike on every desktop.
#pragma once

#include <QPixmap>

#include "platform/ui.h"

namespace tarnwick::qt {

/// A square of `size` device-independent pixels, for a screen of that many pixels to each of them.
QPixmap BoxIcon(ui::Icon icon, int size, qreal devicePixelRatio);

}  // namespace tarnwick::qt
