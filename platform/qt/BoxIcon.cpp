#include "BoxIcon.h"

#include <QPainter>
#include <QPainterPath>

namespace tarnwick::qt {
namespace {

struct Look {
  QColor colour;
  QChar sign;
};

Look LookOf(ui::Icon icon) {
  switch (icon) {
    case ui::Icon::Critical:
      return {QColor(200, 49, 49), u'\u00D7'};
    case ui::Icon::Question:
      return {QColor(47, 111, 179), u'?'};
    case ui::Icon::Information:
      return {QColor(47, 111, 179), u'i'};
    case ui::Icon::Exclamation:
      break;
  }
  return {QColor(222, 146, 20), u'!'};
}

/// A warning is a triangle, everything else a disc, so that they differ without their colours too.
QPainterPath ShapeOf(ui::Icon icon) {
  QPainterPath shape;
  if (icon != ui::Icon::Exclamation) {
    shape.addEllipse(QRectF(4, 4, 92, 92));
    return shape;
  }
  shape.moveTo(50, 10);
  shape.lineTo(94, 88);
  shape.lineTo(6, 88);
  shape.closeSubpath();
  return shape;
}

}  // namespace

QPixmap BoxIcon(ui::Icon icon, int size, qreal devicePixelRatio) {
  QPixmap picture(QSizeF(size * devicePixelRatio, size * devicePixelRatio).toSize());
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(picture.width() / 100.0, picture.height() / 100.0);
  const Look look = LookOf(icon);
  painter.setPen(QPen(look.colour, 7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(look.colour);
  painter.drawPath(ShapeOf(icon));
  QFont font;
  font.setPixelSize(icon == ui::Icon::Exclamation ? 62 : 70);
  font.setBold(true);
  painter.setFont(font);
  painter.setPen(Qt::white);
  const int drop = icon == ui::Icon::Exclamation ? 11 : 0;
  painter.drawText(QRectF(0, drop, 100, 100), Qt::AlignCenter, look.sign);
  painter.end();
  picture.setDevicePixelRatio(devicePixelRatio);
  return picture;
}

}  // namespace tarnwick::qt
