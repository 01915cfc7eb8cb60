// The grid of the web update window: one row a package, one of them current.
#pragma once

#include <QTableView>

#include "PackageTable.h"
#include "widgets/ChoosingView.h"

namespace tarnwick {

/// Rows are numbered from 1, since row 0 is the header's.
///
/// The row that is current at first has not been chosen: it is not shown as selected, and `onChoose` has
/// not run for it.
class PackageGrid final : public ChoosingView<QTableView> {
 public:
  PackageGrid(QWidget* parent, const Catalogue& catalogue);

  /// Shows the list as it is now, with its columns fitted. The current row keeps its number as long as
  /// there is one of that number, else the last one is current. No event.
  void Fill();
  /// The current row; 0 when there is none.
  int Row() const { return currentIndex().row() + 1; }
  /// Selects a row without an event.
  void Row(int row);

 private:
  void resizeEvent(QResizeEvent* event) override;
  /// Takes what the columns want to be from the list.
  void MeasureColumns();
  /// Gives each column what it wants; the names get what the window leaves beside the others.
  void FitColumns();

  std::vector<int> mWanted;

  PackageTable mTable;
};

}  // namespace tarnwick
