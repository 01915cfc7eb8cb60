#include "widgets/ListBox.h"

#include <QSignalBlocker>

namespace tarnwick {

ListBox::ListBox(QWidget* parent, const char* name, const QString& accessibleName) : ChoosingView(parent) {
  setObjectName(QLatin1String(name));
  setAccessibleName(accessibleName);
  setUniformItemSizes(true);
  Listen();
}

void ListBox::Select(int row) {
  Quietly([&] { SelectRow(row); });
  Chosen();
}

void ListBox::Empty() {
  const QSignalBlocker quiet(this);
  clear();
}

}  // namespace tarnwick
