// The list of a page.
#pragma once

#include <QListWidget>

#include "widgets/ChoosingView.h"

namespace tarnwick {

class ListBox final : public ChoosingView<QListWidget> {
 public:
  ListBox(QWidget* parent, const char* name, const QString& accessibleName);

  /// Selects a row, and tells of it as a click would.
  void Select(int row);
  /// Empties the list without an event.
  void Empty();
};

}  // namespace tarnwick
