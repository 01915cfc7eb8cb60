#include "widgets/Controls.h"

#include <QShortcut>

#include "platform/qt/QtText.h"

namespace tarnwick {

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
  // A bar that comes as needed can come and go for ever: of some texts the lines fit with it and not without.
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
}

namespace {

/// Far more than anybody reads, and little enough to be laid out at once.
constexpr qt::TextBound kBoxText{.lines = 2000, .lineLength = 2000};

}  // namespace

void TextBox::Text(std::string_view text) {
  setPlainText(qt::Bounded(qt::Show(text), kBoxText));
}

void TextBox::TextNow(std::string_view text) {
  Text(text);
  viewport()->repaint();
}

}  // namespace tarnwick
