#include "PackageMarks.h"

#include <QIcon>
#include <QPainter>
#include <QStyledItemDelegate>
#include <array>

#include "platform/contain.h"
#include "platform/qt/Contrast.h"
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

/// Item value: the kind of opinion, for the sign in front of the name.
constexpr int kOpinion = Qt::UserRole + 1;

/// A cross, a tick, or nothing.
QPixmap Drawn(Kind kind, const QColor& colour, qreal scale) {
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

/// Draws name and sign in one colour that can be read, also with other colours of the desktop, in a selected
/// row, and where the window is not the active one. Some desktops' own cannot.
class SignDelegate final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    if (option->widget == nullptr) return;
    const auto group = option->state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
    const bool selected = option->state.testFlag(QStyle::State_Selected);
    const auto role = selected ? QPalette::HighlightedText : QPalette::Text;
    const auto behind = selected ? QPalette::Highlight : QPalette::Base;
    const QColor colour =
        qt::ReadableOn(option->palette.color(group, behind), option->palette.color(group, role));
    option->palette.setColor(group, role, colour);
    const QVariant opinion = index.data(kOpinion);
    if (!opinion.isValid()) return;
    const QPixmap sign = Drawn(static_cast<Kind>(opinion.toInt()), colour, option->widget->devicePixelRatioF());
    option->features |= QStyleOptionViewItem::HasDecoration;
    option->icon = QIcon();
    option->icon.addPixmap(sign, QIcon::Normal);
    option->icon.addPixmap(sign, QIcon::Selected);  // Or the style would tint it.
    option->decorationSize = sign.deviceIndependentSize().toSize();
  }
};

}  // namespace

PackageMarks::PackageMarks(ListBox& list, std::function<std::filesystem::path(int)> path)
    : mList(list), mPath(std::move(path)) {
  mList.setIconSize(QSize(Pixels(12), Pixels(12)));  // Else a picture for a fine screen is drawn as large as its pixels.
  mList.setItemDelegate(new SignDelegate(&mList));
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
  item->setData(kOpinion, static_cast<int>(opinion.kind));
  const QString text = qt::Show(opinion.text);
  item->setData(Qt::AccessibleDescriptionRole, text);
  item->setToolTip(qt::PlainTip(text));
}

}  // namespace tarnwick
