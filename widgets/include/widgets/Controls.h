// The few controls that the pages and the windows beside them share.
#pragma once

#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <functional>
#include <string>
#include <string_view>

namespace tarnwick {

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

}  // namespace tarnwick
