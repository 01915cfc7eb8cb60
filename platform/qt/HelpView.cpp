#include "HelpView.h"

#include <QApplication>
#include <QEvent>
#include <QFontInfo>
#include <QHBoxLayout>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "HelpMatch.h"
#include "HelpPages.h"
#include "platform/program.h"
#include "platform/qt/CopyRecord.h"
#include "platform/qt/QtText.h"

namespace tarnwick::qt {
namespace {

/// A page is read at some length, so its text is larger than a label's.
constexpr double kReadingSize = 1.25;

constexpr int kAddress = Qt::UserRole;

}  // namespace

HelpBrowser::HelpBrowser(QWidget* parent) : QTextBrowser(parent) {
  setOpenLinks(false);
  connect(this, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) {
    const QString topic = link.path().isEmpty() ? Topic() : link.path();
    if (link.scheme().isEmpty() && IsHelpTopic(topic)) setSource(QUrl(topic + u'#' + link.fragment()));
  });
  Style();
}

void HelpBrowser::Style() {
  document()->setDefaultFont(font());
  document()->setDefaultStyleSheet(HelpStyle(palette(), font()));
  document()->setDocumentMargin(QFontInfo(font()).pixelSize() * 1.3);
  document()->setIndentWidth(QFontInfo(font()).pixelSize() * 1.5);
}

void HelpBrowser::changeEvent(QEvent* event) {
  QTextBrowser::changeEvent(event);
  if (event->type() != QEvent::PaletteChange || source().isEmpty()) return;
  Style();
  const int place = verticalScrollBar()->value();
  reload();
  verticalScrollBar()->setValue(place);
}

void HelpBrowser::ShowHit() {
  const int tooLow = cursorRect().top() - viewport()->height() / 3;
  verticalScrollBar()->setValue(verticalScrollBar()->value() + tooLow);
}

QVariant HelpBrowser::loadResource(int type, const QUrl& name) {
  const QString topic = name.fileName();
  if (type != QTextDocument::HtmlResource || !IsHelpTopic(topic)) return {};
  return ReadHelpPage(topic);
}

HelpView::HelpView() {
  setObjectName(QStringLiteral("help"));
  setWindowTitle(qt::ShowName(program::This().name) + QStringLiteral(" Help"));
  QFont reading = font();
  const double pixels = QFontInfo(reading).pixelSize() * kReadingSize;
  reading.setPixelSize(static_cast<int>(std::lround(pixels)));
  setFont(reading);
  MakeControls();
  LayOut();
  MakeShortcuts();
  FillContents();
}

void HelpView::MakeControls() {
  cmdBack = new QPushButton(QStringLiteral("&Back"), this);
  cmdBack->setObjectName(QStringLiteral("cmdBack"));
  cmdBack->setToolTip(QStringLiteral("To the page that was shown before (Alt+Left)"));
  cmdBack->setEnabled(false);
  txtFind = new QLineEdit(this);
  txtFind->setObjectName(QStringLiteral("txtFind"));
  txtFind->setPlaceholderText(QStringLiteral("Find in all pages, such as words of a message"));
  txtFind->setAccessibleName(QStringLiteral("Find in all pages of the help"));
  txtFind->setClearButtonEnabled(true);
  cmdFind = new QPushButton(QStringLiteral("Find &Next"), this);
  cmdFind->setObjectName(QStringLiteral("cmdFind"));
  cmdCopy = new QPushButton(QStringLiteral("&Copy details"), this);
  cmdCopy->setObjectName(QStringLiteral("cmdCopy"));
  cmdFind->setEnabled(false);
  lblFind = new QLabel(this);
  lblFind->setObjectName(QStringLiteral("lblFind"));
  treContents = new QTreeWidget(this);
  treContents->setObjectName(QStringLiteral("treContents"));
  treContents->setAccessibleName(QStringLiteral("Contents"));
  treContents->setHeaderHidden(true);
  txtPage = new HelpBrowser(this);
  txtPage->setObjectName(QStringLiteral("txtPage"));
  txtPage->setAccessibleName(QStringLiteral("Page"));

  connect(cmdCopy, &QPushButton::clicked, this, &CopyRecord);
  connect(cmdBack, &QPushButton::clicked, txtPage, &QTextBrowser::backward);
  connect(txtPage, &QTextBrowser::backwardAvailable, cmdBack, &QWidget::setEnabled);
  connect(txtPage, &QTextBrowser::sourceChanged, this, [this](const QUrl& page) { MarkContents(page); });
  connect(txtFind, &QLineEdit::textChanged, this, [this](const QString& text) {
    cmdFind->setEnabled(!text.trimmed().isEmpty());
    lblFind->clear();
  });
  connect(txtFind, &QLineEdit::returnPressed, this, [this] { FindNext(); });
  connect(cmdFind, &QPushButton::clicked, this, [this] { FindNext(); });
  connect(treContents, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
    if (item != nullptr) txtPage->setSource(item->data(0, kAddress).toUrl());
  });
}

void HelpView::LayOut() {
  const int em = QFontInfo(font()).pixelSize();
  auto* const row = new QHBoxLayout;
  row->addWidget(cmdBack);
  row->addSpacing(em);
  row->addWidget(txtFind, 1);
  row->addWidget(cmdFind);
  row->addWidget(lblFind);
  row->addSpacing(em);
  row->addWidget(cmdCopy);
  auto* const halves = new QSplitter(this);
  halves->addWidget(treContents);
  halves->addWidget(txtPage);
  halves->setStretchFactor(1, 1);
  halves->setChildrenCollapsible(false);
  auto* const rows = new QVBoxLayout(this);
  rows->addLayout(row);
  rows->addWidget(halves, 1);
  QWidget* before = txtPage;
  for (QWidget* const next :
       {static_cast<QWidget*>(cmdBack), static_cast<QWidget*>(txtFind), static_cast<QWidget*>(cmdFind),
        static_cast<QWidget*>(cmdCopy), static_cast<QWidget*>(treContents)}) {
    setTabOrder(before, next);
    before = next;
  }
  resize(QSize(em * 66, em * 46).boundedTo(screen()->availableSize() * 9 / 10));
  const int contents = std::min(em * 22, width() / 3);
  halves->setSizes({contents, width() - contents});
  txtPage->setFocus();
}

void HelpView::MakeShortcuts() {
  const auto make = [this](const QKeySequence& keys, auto act) {
    connect(new QShortcut(keys, this), &QShortcut::activated, this, act);
  };
  make(Qt::Key_Escape, [this] { close(); });
  make(QKeySequence::Back, [this] { cmdBack->click(); });
  make(QKeySequence::FindNext, [this] { FindNext(); });
  make(QKeySequence::Find, [this] {
    txtFind->setFocus();
    txtFind->selectAll();
  });
}

void HelpView::FillContents() {
  const QSignalBlocker quiet(treContents);
  for (const char* const known : kHelpTopics) {
    const QString topic = QLatin1String(known);
    const QString page = ReadHelpPage(topic);
    if (page.isEmpty()) continue;
    QTreeWidgetItem* chapter = nullptr;
    for (const HelpEntry& entry : EntriesOf(page, topic)) {
      auto* const item = chapter == nullptr ? new QTreeWidgetItem(treContents) : new QTreeWidgetItem(chapter);
      item->setText(0, entry.title);
      item->setToolTip(0, entry.title);
      item->setData(0, kAddress, entry.address);
      if (chapter == nullptr) chapter = item;
    }
  }
}

void HelpView::MarkContents(const QUrl& page) {
  const QSignalBlocker quiet(treContents);
  treContents->setCurrentItem(nullptr);
  for (int i = 0; i < treContents->topLevelItemCount(); ++i) {
    QTreeWidgetItem* const chapter = treContents->topLevelItem(i);
    const bool here = chapter->data(0, kAddress).toUrl().fileName() == page.fileName();
    chapter->setExpanded(here);
    if (!here) continue;
    treContents->setCurrentItem(chapter);
    for (int k = 0; k < chapter->childCount(); ++k) {
      QTreeWidgetItem* const section = chapter->child(k);
      if (section->data(0, kAddress).toUrl() == page) treContents->setCurrentItem(section);
    }
  }
}

void HelpView::Open(const QString& topic) {
  txtPage->setSource(QUrl(topic));
  txtPage->setFocus();
  lblFind->clear();
  if (isMinimized()) {
    showNormal();
  } else {
    show();
  }
  raise();
  activateWindow();
}

void HelpView::OpenAt(const QString& message) {
  QStringList terms;
  QStringList pages;
  for (const char* const topic : kHelpTopics) {
    const QStringList here = TermsOf(ReadHelpPage(QLatin1String(topic)));
    terms += here;
    for (qsizetype i = 0; i < here.size(); ++i) pages.append(QLatin1String(topic));
  }
  const QString term = TermOf(terms, message);
  Open(term.isEmpty() ? QLatin1String(kHelpTopics.front()) : pages[terms.indexOf(term)]);
  if (!term.isEmpty() && txtPage->find(MatcherOf(term))) txtPage->ShowHit();
}

void HelpView::FindNext() {
  const QString text = txtFind->text().simplified();
  if (text.isEmpty()) return;
  const QRegularExpression wanted = MatcherOf(text);
  const bool found = txtPage->find(wanted) || FindBeyond(wanted);
  if (found) txtPage->ShowHit();
  lblFind->setText(found ? QString() : QStringLiteral("Not found"));
}

bool HelpView::FindBeyond(const QRegularExpression& wanted) {
  const int pages = static_cast<int>(kHelpTopics.size());
  int here = 0;
  while (here < pages && txtPage->Topic() != QLatin1String(kHelpTopics[static_cast<std::size_t>(here)]))
    ++here;
  for (int step = 1; step <= pages; ++step) {
    const QString topic = QLatin1String(kHelpTopics[static_cast<std::size_t>((here + step) % pages)]);
    QTextDocument document;
    document.setHtml(ReadHelpPage(topic));
    if (document.find(wanted).isNull()) continue;
    if (topic != txtPage->Topic()) txtPage->setSource(QUrl(topic));
    txtPage->moveCursor(QTextCursor::Start);
    return txtPage->find(wanted);
  }
  return false;
}

}  // namespace tarnwick::qt
