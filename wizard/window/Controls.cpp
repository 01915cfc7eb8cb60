#include "wizard/Controls.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QShortcut>
#include <QSignalBlocker>
#include <algorithm>

#include "platform/qt/QtText.h"
#include "wizard/PageWindow.h"

namespace tarnwick {

int Pixels(int atBaseFont) {
  return TwipsToPixels(atBaseFont * 15);
}

QLabel* MakeLabel(QWidget* parent, const char* name, std::string_view text) {
  auto* const label = new QLabel(qt::Show(text), parent);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);
  return label;
}

QLabel* MakeWrappedLabel(QWidget* parent, const char* name) {
  QLabel* const label = MakeLabel(parent, name, {});
  label->setWordWrap(true);
  label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  return label;
}

QPushButton* MakeButton(QWidget* parent, const char* name, std::string_view caption,
                        std::function<void()> click) {
  auto* const button = new QPushButton(qt::Show(caption), parent);
  button->setObjectName(QLatin1String(name));
  QObject::connect(button, &QPushButton::clicked, button, std::move(click));
  return button;
}

void GiveKey(QPushButton& button, const QKeySequence& key) {
  // The button's own shortcut would click a moment later, when the page may be locked already.
  auto* const shortcut = new QShortcut(key, &button);
  shortcut->setAutoRepeat(false);
  QObject::connect(shortcut, &QShortcut::activated, &button, &QPushButton::click);
  button.setToolTip(key.toString(QKeySequence::NativeText));
}

TextBox::TextBox(QWidget* parent, const char* name, const QString& accessibleName) : QPlainTextEdit(parent) {
  setObjectName(QLatin1String(name));
  setAccessibleName(accessibleName);
  setReadOnly(true);
  setTabChangesFocus(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  document()->setDocumentMargin(2);
}

void TextBox::Text(std::string_view text) {
  setPlainText(qt::Show(text));
}

void TextBox::TextNow(std::string_view text) {
  Text(text);
  viewport()->repaint();
}

ListBox::ListBox(QWidget* parent, const char* name, const QString& accessibleName) : QListWidget(parent) {
  setObjectName(QLatin1String(name));
  setAccessibleName(accessibleName);
  setSelectionMode(QAbstractItemView::SingleSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setUniformItemSizes(true);
  connect(this, &QListWidget::itemSelectionChanged, this, [this] {
    if (!mByMouse) Clicked();
  });
}

int ListBox::Selected() const {
  const QModelIndexList selected = selectionModel()->selectedRows();
  return selected.isEmpty() ? -1 : selected.front().row();
}

void ListBox::Select(int row) {
  mByMouse = true;
  setCurrentRow(row, QItemSelectionModel::ClearAndSelect);
  mByMouse = false;
  Clicked();
}

void ListBox::Empty() {
  const QSignalBlocker quiet(this);
  clear();
}

void ListBox::keyPressEvent(QKeyEvent* event) {
  const int key = event->key();
  const bool arrow = key == Qt::Key_Down || key == Qt::Key_Up || key == Qt::Key_Home;
  if (!arrow || Selected() >= 0 || count() == 0) return QListWidget::keyPressEvent(event);
  setCurrentRow(std::max(currentRow(), 0), QItemSelectionModel::ClearAndSelect);
}

void ListBox::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;  // No other button chooses.
  mByMouse = true;
  QListWidget::mousePressEvent(event);
}

void ListBox::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  QListWidget::mouseReleaseEvent(event);
  mByMouse = false;
  Clicked();
}

void ListBox::Clicked() {
  if (Selected() >= 0 && onClick) onClick();
}

}  // namespace tarnwick
