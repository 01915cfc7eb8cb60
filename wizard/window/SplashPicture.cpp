#include "SplashPicture.h"

#include <QPainter>
#include <QPainterPath>
#include <cstdint>

namespace tarnwick {
namespace {

constexpr QColor kInk(7, 12, 24);        // what stands before the sky
constexpr QColor kMetal(208, 217, 230);  // the tube
constexpr QColor kMetalDark(122, 136, 158);

/// A small fixed sequence, so that the stars stand where they always stood.
class Sequence {
 public:
  double Next() {
    mState = mState * 1664525u + 1013904223u;
    return (mState >> 8) / 16777216.0;
  }

 private:
  std::uint32_t mState = 20;
};

void DrawSky(QPainter& painter) {
  QLinearGradient sky(0, 0, 0, SplashPicture::kHeight);
  sky.setColorAt(0.0, QColor(9, 16, 42));
  sky.setColorAt(0.55, QColor(25, 46, 92));
  sky.setColorAt(0.82, QColor(74, 96, 142));
  sky.setColorAt(1.0, QColor(214, 150, 112));
  painter.fillRect(0, 0, SplashPicture::kWidth, SplashPicture::kHeight, sky);

  painter.save();
  painter.translate(62, 62);
  painter.rotate(-58);
  QLinearGradient band(0, -26, 0, 26);
  band.setColorAt(0.0, QColor(190, 205, 255, 0));
  band.setColorAt(0.5, QColor(190, 205, 255, 52));
  band.setColorAt(1.0, QColor(190, 205, 255, 0));
  painter.fillRect(-170, -26, 340, 52, band);
  painter.restore();
}

void DrawStars(QPainter& painter) {
  Sequence sequence;
  painter.setPen(Qt::NoPen);
  for (int i = 0; i < 110; ++i) {
    const double x = sequence.Next() * SplashPicture::kWidth;
    const double y = sequence.Next() * 165.0;
    const double size = 0.35 + 0.75 * sequence.Next() * sequence.Next();
    const int light = static_cast<int>(235 * (1.0 - y / 210.0));
    painter.setBrush(QColor(255, 250, 240, light));
    painter.drawEllipse(QPointF(x, y), size, size);
  }
  for (const QPointF at : {QPointF(24, 30), QPointF(96, 22), QPointF(88, 74)}) {
    QRadialGradient glow(at, 6);
    glow.setColorAt(0.0, QColor(255, 255, 255, 230));
    glow.setColorAt(0.18, QColor(210, 225, 255, 120));
    glow.setColorAt(1.0, QColor(210, 225, 255, 0));
    painter.setBrush(glow);
    painter.drawEllipse(at, 6, 6);
  }
}

void DrawHills(QPainter& painter) {
  painter.setPen(Qt::NoPen);
  QPainterPath far(QPointF(0, 196));
  far.cubicTo(26, 182, 44, 194, 66, 188);
  far.cubicTo(88, 182, 104, 190, 120, 184);
  far.lineTo(120, 226);
  far.lineTo(0, 226);
  painter.fillPath(far, QColor(30, 40, 70));
  QPainterPath near(QPointF(0, 210));
  near.cubicTo(30, 200, 70, 206, 120, 200);
  near.lineTo(120, 226);
  near.lineTo(0, 226);
  painter.fillPath(near, kInk);
}

void DrawTripod(QPainter& painter) {
  painter.setPen(QPen(kInk, 4.2, Qt::SolidLine, Qt::RoundCap));
  painter.drawLine(QPointF(57, 158), QPointF(32, 213));
  painter.drawLine(QPointF(62, 158), QPointF(87, 213));
  painter.drawLine(QPointF(60, 158), QPointF(62, 214));
  painter.setPen(QPen(kInk, 1.6));
  painter.drawLine(QPointF(44, 188), QPointF(75, 188));
  painter.setPen(Qt::NoPen);
  painter.setBrush(kInk);
  painter.drawRoundedRect(QRectF(51, 148, 17, 13), 2.5, 2.5);
}

/// The polar axis, its motor housing and the counterweight.
void DrawMountHead(QPainter& painter) {
  painter.setPen(QPen(kMetalDark, 2.4, Qt::SolidLine, Qt::RoundCap));
  painter.drawLine(QPointF(60, 133), QPointF(84, 157));
  painter.setPen(Qt::NoPen);
  painter.save();
  painter.translate(84, 157);
  painter.rotate(45);
  painter.setBrush(QColor(70, 80, 100));
  painter.drawRoundedRect(QRectF(-6, -7, 9, 14), 2, 2);
  painter.restore();
  painter.setBrush(QColor(46, 54, 74));
  painter.drawRoundedRect(QRectF(50, 124, 19, 28), 5, 5);
  painter.setBrush(QColor(240, 84, 70));
  painter.drawEllipse(QPointF(59.5, 144), 1.7, 1.7);
}

void DrawTube(QPainter& painter) {
  painter.save();
  painter.translate(58, 122);
  painter.rotate(-52);
  QLinearGradient tube(0, -11, 0, 11);
  tube.setColorAt(0.0, QColor(244, 247, 252));
  tube.setColorAt(0.35, kMetal);
  tube.setColorAt(1.0, kMetalDark);
  painter.setPen(Qt::NoPen);
  painter.setBrush(tube);
  painter.drawRoundedRect(QRectF(-34, -10, 74, 20), 2, 2);
  painter.setBrush(QColor(36, 44, 62));
  painter.drawRoundedRect(QRectF(38, -11.5, 15, 23), 2, 2);
  painter.drawRoundedRect(QRectF(-37, -8, 4, 16), 1, 1);
  painter.drawRoundedRect(QRectF(-46, -3.2, 10, 6.4), 1.5, 1.5);
  painter.drawRect(QRectF(-13, -10.6, 4, 21.2));
  painter.drawRect(QRectF(13, -10.6, 4, 21.2));
  painter.setBrush(QColor(56, 66, 88));
  painter.drawRoundedRect(QRectF(-24, -16.5, 26, 5), 2, 2);
  painter.restore();
}

void DrawScene(QPainter& painter) {
  painter.setRenderHint(QPainter::Antialiasing);
  DrawSky(painter);
  DrawStars(painter);
  DrawHills(painter);
  DrawTripod(painter);
  DrawMountHead(painter);
  DrawTube(painter);
}

}  // namespace

SplashPicture::SplashPicture(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAccessibleName(QStringLiteral("A telescope under the night sky"));
}

void SplashPicture::paintEvent(QPaintEvent*) {
  const QSize pixels = (QSizeF(size()) * devicePixelRatioF()).toSize();
  if (mPicture.size() != pixels) {
    mPicture = QPixmap(pixels);
    QPainter painter(&mPicture);
    painter.scale(pixels.width() / double{kWidth}, pixels.height() / double{kHeight});
    DrawScene(painter);
  }
  QPainter(this).drawPixmap(rect(), mPicture);
}

}  // namespace tarnwick
