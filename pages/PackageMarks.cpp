#include "PackageMarks.h"

#include <QIcon>
#include <QPainter>
#include <array>

#include "platform/contain.h"
#include "platform/qt/QtText.h"
#include "widgets/ListBox.h"
#include "widgets/Scale.h"
#include "wizard/CWizard.h"
#include "wizard/modWizard.h"

namespace tarnwick {
namespace {

using Kind = PackageOpinion::Kind;

/// A slice is as long as this, or as one package takes. Between two the window is served.
constexpr int kSlice = 8;   ///< ms
constexpr int kBreak = 1;   ///< ms
constexpr int kRetry = 50;  ///< ms while the page is locked

/// A cross, a tick, or nothing.
QPixmap Drawn(Kind kind, QColor colour, qreal scale) {
  const int size = Pixels(12);
  QPixmap picture(QSize(size, size) * scale);
  picture.setDevicePixelRatio(scale);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(colour, size / 6.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  const auto at = [size](double x, double y) { return QPointF(x * size, y * size); };
  if (kind == Kind::DoesNotFit) {
    painter.drawLine(at(0.25, 0.25), at(0.75, 0.75));
    painter.drawLine(at(0.75, 0.25), at(0.25, 0.75));
  } else if (kind == Kind::Fits) {
    painter.drawPolyline(std::array{at(0.2, 0.55), at(0.4, 0.75), at(0.8, 0.25)}.data(), 3);
  }
  return picture;
}

/// In the colours of the list's text.
QIcon SignOf(const QWidget& list, Kind kind) {
  QIcon sign;
  const qreal scale = list.devicePixelRatioF();
  sign.addPixmap(Drawn(kind, list.palette().color(QPalette::Text), scale), QIcon::Normal);
  sign.addPixmap(Drawn(kind, list.palette().color(QPalette::HighlightedText), scale), QIcon::Selected);
  return sign;
}

}  // namespace

PackageMarks::PackageMarks(ListBox& list, std::function<std::filesystem::path(int)> path)
    : mList(list), mPath(std::move(path)) {
  mList.setIconSize(QSize(Pixels(12), Pixels(12)));  // Else a picture for a fine screen is drawn as large as its pixels.
  mTimer.setSingleShot(true);
  connect(&mTimer, &QTimer::timeout, this, [this] { Contain([this] { JudgeSome(); }); });
}

void PackageMarks::Restart() {
  mNext = 0;
  mTimer.start(kBreak);
}

std::string PackageMarks::Say(int row) {
  const PackageOpinion opinion = mJudge.Judge(mPath(row));
  Mark(row, opinion);
  return opinion.text;
}

void PackageMarks::JudgeSome() {
  if (gController == nullptr || !mList.isVisible() || gController->WizardHandle().Frozen())
    return mTimer.start(kRetry);
  QElapsedTimer slice;
  for (slice.start(); mNext < mList.count() && slice.elapsed() < kSlice; ++mNext)
    Mark(mNext, mJudge.Judge(mPath(mNext)));
  if (mNext < mList.count()) mTimer.start(kBreak);
}

void PackageMarks::Mark(int row, const PackageOpinion& opinion) {
  QListWidgetItem* const item = mList.item(row);
  item->setIcon(SignOf(mList, opinion.kind));
  const QString text = qt::Show(opinion.text);
  item->setData(Qt::AccessibleDescriptionRole, text);
  item->setToolTip(qt::PlainTip(text));
}

}  // namespace tarnwick
