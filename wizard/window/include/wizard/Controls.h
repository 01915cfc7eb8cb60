// The few controls that the pages and the windows beside them share.
#pragma once

#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <functional>
#include <string>
#include <string_view>

namespace tarnwick {

/// Device-independent pixels at the base font, grown with the font like the page itself.
int Pixels(int atBaseFont);

/// A label named `name`; `text` may hold CR LF.
QLabel* MakeLabel(QWidget* parent, const char* name, std::string_view text);
QLabel* MakeWrappedLabel(QWidget* parent, const char* name);
QPushButton* MakeButton(QWidget* parent, const char* name, std::string_view caption,
                        std::function<void()> click);
/// A key that presses `button`, told in its tool tip: the caption stays as it is.
void GiveKey(QPushButton& button, const QKeySequence& key);

/// A multi-line text that the user can read and copy.
class TextBox : public QPlainTextEdit {
 public:
  TextBox(QWidget* parent, const char* name, const QString& accessibleName);
  void Text(std::string_view text);
  /// Shows the text and repaints it at once.
  void TextNow(std::string_view text);
};

/// A list of which at most one entry is selected, with one event for every choice.
///
/// `onClick` runs for a click on an entry, the selected one too, for a choice by keyboard, and for
/// `Select`. Having the focus selects nothing.
class ListBox final : public QListWidget {
 public:
  ListBox(QWidget* parent, const char* name, const QString& accessibleName);

  /// The selected row from 0, or -1.
  int Selected() const;
  void Select(int row);
  /// Empties the list without an event.
  void Empty();

  std::function<void()> onClick;

 protected:
  /// Where nothing is chosen, the first arrow key chooses the entry that the focus shows.
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  void Clicked();
  bool mByMouse = false;  ///< The mouse is down or a row is being set: the event comes at its end.
};

}  // namespace tarnwick
