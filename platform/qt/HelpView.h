// The window of the help: contents at the left, the page at the right, the search above.
#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QWidget>

namespace tarnwick::qt {

/// A browser to which nothing exists but the help's pages: every other address, of this machine or
/// another, is an empty resource, and links lead from page to page only.
class HelpBrowser final : public QTextBrowser {
 public:
  explicit HelpBrowser(QWidget* parent);
  /// File name of the page on view.
  QString Topic() const { return source().fileName(); }
  /// Brings what was found to where it stands with what explains it below.
  void ShowHit();

 protected:
  /// A new palette is taken over at the place where the user reads.
  void changeEvent(QEvent* event) override;
  QVariant loadResource(int type, const QUrl& name) override;

 private:
  void Style();
};

class HelpView final : public QWidget {
 public:
  HelpView();
  /// Brings the window to the front with the page `topic`, a known one, from its beginning.
  void Open(const QString& topic);
  /// The same with what the pages say of `message`, or with the first page where they say nothing.
  void OpenAt(const QString& message);

 private:
  void MakeControls();
  void LayOut();
  void MakeShortcuts();
  void FillContents();
  /// Selects the row of the page or section that came into view, and opens no other page's rows.
  void MarkContents(const QUrl& page);
  /// Goes to the next hit, from page to page and round to where it began.
  void FindNext();
  bool FindBeyond(const QRegularExpression& wanted);

  QPushButton* cmdBack = nullptr;
  QLineEdit* txtFind = nullptr;
  QPushButton* cmdFind = nullptr;
  QPushButton* cmdCopy = nullptr;
  QLabel* lblFind = nullptr;
  QTreeWidget* treContents = nullptr;
  HelpBrowser* txtPage = nullptr;
};

}  // namespace tarnwick::qt
