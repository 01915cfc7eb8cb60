#include "widgets/ProgressBar.h"

#include <QAccessible>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "ProgressAccess.h"

namespace tarnwick {

ProgressBar::ProgressBar(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("progress"));
  TellScreenReadersOfProgress();
  setAccessibleName(QStringLiteral("Progress"));
  setAttribute(Qt::WA_OpaquePaintEvent);
  mText.setTextFormat(Qt::PlainText);
}

void ProgressBar::Label(const QString& text) {
  mLabel = text;
  Show(mLabel + mWaiting);
}

void ProgressBar::Waiting(const QString& what) {
  mWaiting = what.isEmpty() ? what : QStringLiteral(", ") + what;
  Show(mLabel + mWaiting);
}

void ProgressBar::Show(const QString& text) {
  if (text == mText.text()) return;
  mText.setText(text);
  mText.prepare({}, font());
  setAccessibleDescription(text);
  repaint();
}

void ProgressBar::Bar(double fraction) {
  mFraction = std::clamp(fraction, 0.0, 1.0);
  const int width = WidthOf(mFraction);
  if (width == mBarWidth) return;
  mBarWidth = width;
  repaint();
  if (!QAccessible::isActive()) return;
  QAccessibleValueChangeEvent moved(this, Percent());
  QAccessible::updateAccessibility(&moved);
}

int ProgressBar::Percent() const {
  return static_cast<int>(std::lround(mFraction * 100.0));
}

int ProgressBar::WidthOf(double fraction) const {
  return static_cast<int>(std::lround(Track().width() * fraction));
}

void ProgressBar::resizeEvent(QResizeEvent*) {
  mBarWidth = WidthOf(mFraction);
}

void ProgressBar::paintEvent(QPaintEvent*) {
  // The page is disabled during a run; its progress is not.
  const QPalette& colours = palette();
  const auto group = QPalette::Active;
  QPainter painter(this);
  painter.fillRect(rect(), colours.color(group, QPalette::Mid));
  painter.fillRect(Track(), colours.color(group, QPalette::Base));
  QRect bar = Track();
  bar.setWidth(mBarWidth);
  painter.fillRect(bar, colours.color(group, QPalette::Highlight));
  if (mText.text().isEmpty()) return;
  const QSize rest = size() - mText.size().toSize();
  const QPoint at(rest.width() / 2, rest.height() / 2);
  painter.setPen(colours.color(group, QPalette::Text));
  painter.drawStaticText(at, mText);
  if (bar.isEmpty()) return;
  // Over the bar the text is drawn once more, in the colour that reads well there.
  painter.setClipRect(bar);
  painter.fillRect(bar, colours.color(group, QPalette::Highlight));
  painter.setPen(colours.color(group, QPalette::HighlightedText));
  painter.drawStaticText(at, mText);
}

}  // namespace tarnwick
