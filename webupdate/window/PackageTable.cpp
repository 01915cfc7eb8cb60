#include "PackageTable.h"

#include <QColor>
#include <array>

#include "platform/qt/QtText.h"
#include "webupdate/Catalogue.h"

namespace tarnwick {
namespace {

enum Column { kName, kDate, kSize, kPlace, kColumns };

/// Of packages that can be fetched, and of those that are there. Their text is black on any desktop, for
/// the rows look alike on each.
constexpr QRgb kRemoteRow = 0xFFFFC080;
constexpr QRgb kLocalRow = 0xFFFFFFFF;
constexpr QRgb kRowText = 0xFF000000;

}  // namespace

PackageTable::PackageTable(const Catalogue& catalogue, QObject* parent)
    : QAbstractTableModel(parent), mCatalogue(catalogue) {}

void PackageTable::Refill() {
  beginResetModel();
  mRows = mCatalogue.FileCount();
  endResetModel();
}

int PackageTable::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : mRows;
}

int PackageTable::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumns;
}

QString PackageTable::Text(int row, int column) const {
  const FileEntry& entry = mCatalogue.Files(row + 1);
  switch (column) {
    case kName:
      return qt::ShowName(entry.Name);
    case kDate:
      return qt::Show(entry.Date);
    case kSize:
      return QString::number(entry.Size);
    default:
      return entry.Local ? QStringLiteral("Local") : QStringLiteral("Remote");
  }
}

QVariant PackageTable::data(const QModelIndex& index, int role) const {
  // Between a change of the list and the next filling a painter may still ask for a row that has gone.
  if (!index.isValid() || index.row() >= mCatalogue.FileCount()) return {};
  switch (role) {
    case Qt::DisplayRole:
      return Text(index.row(), index.column());
    case Qt::ToolTipRole:  // A column may be too narrow for its text.
      return qt::PlainTip(Text(index.row(), index.column()));
    case Qt::TextAlignmentRole:
      return int(Qt::AlignVCenter | (index.column() == kSize ? Qt::AlignRight : Qt::AlignLeft));
    case Qt::BackgroundRole:
      return QColor::fromRgb(mCatalogue.Files(index.row() + 1).Local ? kLocalRow : kRemoteRow);
    case Qt::ForegroundRole:
      return QColor::fromRgb(kRowText);
    default:
      return {};
  }
}

QVariant PackageTable::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole) {
    return int(Qt::AlignVCenter | (section == kSize ? Qt::AlignRight : Qt::AlignLeft));
  }
  if (role != Qt::DisplayRole) return {};
  constexpr std::array<const char*, kColumns> kTitles{"Filename", "Date", "Size", "Location"};
  return QString::fromLatin1(kTitles.at(static_cast<std::size_t>(section)));
}

}  // namespace tarnwick
