#include "FocusStyle.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QStyleOption>

namespace tarnwick {

FocusStyle::FocusStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void FocusStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
  QProxyStyle::drawPrimitive(element, option, painter, widget);
  if (element != PE_Frame || !option->state.testFlag(State_HasFocus)) return;
  if (qobject_cast<const QAbstractScrollArea*>(widget) == nullptr) return;
  painter->setPen(option->palette.color(QPalette::Highlight));
  painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
}

}  // namespace tarnwick
