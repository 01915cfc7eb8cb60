// How a row is chosen: the one policy of lists and grids.
#pragma once

#include <QKeyEvent>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <algorithm>
#include <functional>
#include <utility>

namespace tarnwick {

/// A view of rows, `View`, of which at most one is selected, with one event for every choice.
///
/// `onChoose` runs for a click on a row, the selected one too, and for a choice by keyboard. A click is
/// whole or nothing: the press changes nothing that is seen, and the release chooses the row under the
/// pointer; with Ctrl it takes a choice back. Having the focus selects nothing; where nothing is selected,
/// the first arrow key selects the row that the focus shows.
template <class View>
class ChoosingView : public View {
 public:
  /// The selected row from 0, or -1.
  int Selected() const {
    const QModelIndexList selected = this->selectionModel()->selectedRows();
    return selected.isEmpty() ? -1 : selected.front().row();
  }

  std::function<void()> onChoose;

 protected:
  explicit ChoosingView(QWidget* parent) : View(parent) {
    this->setSelectionMode(QAbstractItemView::SingleSelection);
    this->setSelectionBehavior(QAbstractItemView::SelectRows);
    this->setEditTriggers(QAbstractItemView::NoEditTriggers);
  }
  /// Begins to tell of choices. Called once, when the view has its model.
  void Listen() {
    View::connect(this->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] { Chosen(); });
  }
  /// Runs `change` without an event for what it selects.
  template <class Change>
  void Quietly(Change&& change) {
    const QScopedValueRollback quiet(mQuiet, true);
    change();
  }
  void Chosen() {
    if (!mQuiet && Selected() >= 0 && onChoose) onChoose();
  }
  void SelectRow(int row) {
    const QModelIndex index = this->model()->index(row, 0);
    this->selectionModel()->setCurrentIndex(index,
                                            QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  }

  void keyPressEvent(QKeyEvent* event) override {
    const int key = event->key();
    const bool arrow = key == Qt::Key_Down || key == Qt::Key_Up || key == Qt::Key_Home;
    if (!arrow || Selected() >= 0 || this->model()->rowCount() == 0) return View::keyPressEvent(event);
    SelectRow(std::max(this->currentIndex().row(), 0));
  }
  void mousePressEvent(QMouseEvent* event) override { mPressed = event->button() == Qt::LeftButton; }
  void mouseDoubleClickEvent(QMouseEvent* event) override { mousePressEvent(event); }
  void mouseMoveEvent(QMouseEvent*) override {}
  void mouseReleaseEvent(QMouseEvent* event) override {
    if (event->button() != Qt::LeftButton || !std::exchange(mPressed, false)) return;
    const QModelIndex under = this->indexAt(event->position().toPoint());
    if (!under.isValid()) return;
    const bool takesBack = event->modifiers() == Qt::ControlModifier && under.row() == Selected();
    Quietly([&] { takesBack ? this->clearSelection() : SelectRow(under.row()); });
    Chosen();
  }

 private:
  bool mQuiet = false;
  bool mPressed = false;
};

}  // namespace tarnwick
