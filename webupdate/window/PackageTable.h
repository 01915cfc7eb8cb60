// The packages of the catalogue, as a table view asks for them.
#pragma once

#include <QAbstractTableModel>

namespace tarnwick {

class Catalogue;

/// One row for each package, with name, date, size and place. Nothing is copied: after a change of the
/// list comes a `Refill`.
class PackageTable final : public QAbstractTableModel {
 public:
  /// `catalogue` is borrowed.
  PackageTable(const Catalogue& catalogue, QObject* parent);

  void Refill();
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  /// What the cell shows; `row` is from 0.
  QString Text(int row, int column) const;

 private:
  const Catalogue& mCatalogue;
  int mRows = 0;
};

}  // namespace tarnwick
