#include "PackageGrid.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <algorithm>

#include "wizard/Controls.h"

namespace tarnwick {
namespace {

/// No text makes a column wider than this, at the base font.
constexpr int kWidestColumn = 260;
/// Between the columns.
constexpr int kAir = 12;

}  // namespace

PackageGrid::PackageGrid(QWidget* parent, const Catalogue& catalogue)
    : QTableView(parent), mTable(catalogue, this) {
  setObjectName(QStringLiteral("Grid"));
  setAccessibleName(QStringLiteral("Firmware packages"));
  setModel(&mTable);
  setSelectionBehavior(SelectRows);
  setSelectionMode(SingleSelection);
  setTabKeyNavigation(false);
  setWordWrap(false);
  setCornerButtonEnabled(false);
  setFrameShape(QFrame::NoFrame);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + Pixels(5));
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setStretchLastSection(true);
  horizontalHeader()->setMaximumSectionSize(Pixels(kWidestColumn));
  horizontalHeader()->setResizeContentsPrecision(-1);
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] { Chosen(); });
}

void PackageGrid::Fill() {
  const int row = Row();
  const bool chosen = selectionModel()->hasSelection();
  mQuiet = true;
  mTable.Refill();
  FitColumns();
  const int count = mTable.rowCount();
  if (count > 0) {
    const QModelIndex current = mTable.index(std::clamp(row, 1, count) - 1, 0);
    selectionModel()->setCurrentIndex(
        current, chosen ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows
                        : QItemSelectionModel::SelectionFlags(QItemSelectionModel::NoUpdate));
    scrollTo(current);
  }
  mQuiet = false;
}

void PackageGrid::FitColumns() {
  resizeColumnsToContents();
  QHeaderView& header = *horizontalHeader();
  for (int column = 0; column < header.count(); ++column) {
    header.resizeSection(column, header.sectionSize(column) + Pixels(kAir));
  }
}

void PackageGrid::Row(int row) {
  mQuiet = true;
  selectRow(row - 1);
  mQuiet = false;
}

void PackageGrid::keyPressEvent(QKeyEvent* event) {
  const bool moves = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
  if (moves && Row() > 0 && !selectionModel()->hasSelection()) {
    selectRow(Row() - 1);  // The first step chooses the row that is current already.
    return;
  }
  QTableView::keyPressEvent(event);
}

void PackageGrid::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;  // No other button chooses.
  mQuiet = true;
  QTableView::mousePressEvent(event);
}

void PackageGrid::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  QTableView::mouseReleaseEvent(event);
  mQuiet = false;
  Chosen();
}

void PackageGrid::Chosen() {
  if (!mQuiet && selectionModel()->hasSelection() && onChoose) onChoose();
}

}  // namespace tarnwick
