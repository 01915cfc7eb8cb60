#include "PackageGrid.h"

#include <QHeaderView>
#include <algorithm>
#include <array>
#include <numeric>

#include "widgets/Scale.h"

namespace tarnwick {
namespace {

/// The column of names is never narrower than this, at the base font.
constexpr int kLeastName = 80;
/// Between the columns.
constexpr int kAir = 12;

/// The widths of single characters: enough to tell the widest of many texts, of which then that one is
/// measured. To lay out each of them would take most of the time of a long list.
class CharacterWidths {
 public:
  explicit CharacterWidths(const QFontMetrics& metrics) {
    for (std::size_t i = 0; i < mWidths.size(); ++i) {
      mWidths[i] = metrics.horizontalAdvance(QChar(static_cast<char16_t>(i)));
    }
  }

  /// -1 where there is no row.
  int WidestRow(const PackageTable& table, int column) const {
    int widest = -1;
    int most = -1;
    for (int row = 0; row < table.rowCount(); ++row) {
      const int width = WidthOf(table.Text(row, column));
      if (width > most) widest = row;
      most = std::max(most, width);
    }
    return widest;
  }

 private:
  int WidthOf(const QString& text) const {
    int width = 0;
    for (const QChar c : text) width += mWidths[c.unicode() < mWidths.size() ? c.unicode() : 'W'];
    return width;
  }

  std::array<int, 256> mWidths{};
};

}  // namespace

PackageGrid::PackageGrid(QWidget* parent, const Catalogue& catalogue)
    : ChoosingView(parent), mTable(catalogue, this) {
  setObjectName(QStringLiteral("Grid"));
  setAccessibleName(QStringLiteral("Firmware packages"));
  setModel(&mTable);
  setTabKeyNavigation(false);
  setWordWrap(false);
  setCornerButtonEnabled(false);
  setFrameShape(QFrame::NoFrame);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + Pixels(5));
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setStretchLastSection(true);
  Listen();
}

void PackageGrid::Fill() {
  const int row = Row();
  const bool chosen = selectionModel()->hasSelection();
  Quietly([&] {
    mTable.Refill();
    MeasureColumns();
    FitColumns();
    const int count = mTable.rowCount();
    if (count == 0) return;
    const QModelIndex current = mTable.index(std::clamp(row, 1, count) - 1, 0);
    if (chosen) {
      SelectRow(current.row());
    } else {
      selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    }
    scrollTo(current);
  });
}

void PackageGrid::MeasureColumns() {
  QHeaderView& header = *horizontalHeader();
  mWanted.clear();
  const CharacterWidths widths(fontMetrics());
  for (int column = 0; column < header.count(); ++column) {
    int fit = header.sectionSizeHint(column);
    if (const int row = widths.WidestRow(mTable, column); row >= 0) {
      fit = std::max(fit, sizeHintForIndex(mTable.index(row, column)).width());
    }
    mWanted.push_back(fit + Pixels(kAir));
  }
}

void PackageGrid::FitColumns() {
  if (mWanted.empty()) return;
  const int others = std::accumulate(mWanted.begin() + 1, mWanted.end(), 0);
  const int room = std::max(viewport()->width() - others, Pixels(kLeastName));
  for (std::size_t column = 0; column < mWanted.size(); ++column) {
    const int width = column == 0 ? std::min(mWanted[0], room) : mWanted[column];
    horizontalHeader()->resizeSection(static_cast<int>(column), width);
  }
}

void PackageGrid::resizeEvent(QResizeEvent* event) {
  ChoosingView::resizeEvent(event);
  FitColumns();
}

void PackageGrid::Row(int row) {
  Quietly([&] { SelectRow(row - 1); });
}

}  // namespace tarnwick
