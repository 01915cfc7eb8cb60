// The help: that its pages explain what the program says, that their links lead somewhere, its window.
#include <gmock/gmock.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTest>
#include <QTextBrowser>
#include <set>

#include "platform/qt/HelpWindow.h"
#include "support/TempFolder.h"

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
const fs::path kSource = TARNWICK_SOURCE_DIR;

/// Calls `use` with name, text and the captures of `pattern` in it, for each source file or page below.
template <class Use>
void Scan(const fs::path& folder, const char* pattern, Use use) {
  for (const auto& file : fs::recursive_directory_iterator(kSource / folder)) {
    if (!std::set<fs::path>{".cpp", ".h", ".htm"}.contains(file.path().extension())) continue;
    const QString joined =
        QString::fromStdString(ReadFile(file))
            .remove(QRegularExpression("\"\\s*\"|//.*|(record::\\w+|RecordLinkFailure)\\([^;]*;"));
    auto match = QRegularExpression(pattern).globalMatch(joined);
    while (match.hasNext()) use(file.path().filename().string(), match.next());
  }
}

TEST(HelpPages, ExplainEveryTextOfTwoWordsOrMore) {
  QString help;
  Scan("help", "(?s).*", [&](const auto&, const auto& page) {
    QTextDocument document;
    document.setHtml(page.captured());
    help += document.toPlainText().simplified();
  });
  // Boxes do not show these: names of devices and models, what the wizard's pages say at rest, the text of
  // files, and what is for the record.
  const std::set<std::string> silent{
      "BatchText.cpp",    "BootPackages.cpp", "Devices.cpp",     "QalWriter.cpp",   "Step1.cpp",
      "SignedFile.cpp",   "Swap.cpp",         "LinkLibrary.cpp", "EarlierSwap.cpp", "HttpCause.cpp",
      "DeviceRecord.cpp", "RunRecord.cpp",    "Journal.cpp",     "Refusal.cpp",     "Release.cpp",
      "QalLint.cpp",      "SignatureLine.h",  "Setback.cpp"};
  const QRegularExpression atRest(
      "^(About the|DOCTYPE|Blocksize O|Choose |Content-Type|HTTP Client|SendRequest|Make sure|Note: |QAL "
      "File:|Status report|platform/|(n<!-- )?tarnwick package)");
  int texts = 0;
  const auto explained = [&](const std::string& file, const auto& literal) {
    for (QString line : literal.captured(1).split("\\r\\n")) {
      line = line.remove(QRegularExpression("^[^A-Za-z]*")).simplified();
      if (!line.contains(' ') || silent.contains(file) || atRest.match(line).hasMatch()) continue;
      EXPECT_TRUE(help.contains(line, Qt::CaseInsensitive)) << file << ": " << line.toStdString();
      ++texts;
    }
  };
  for (const char* room : {"firmware", "link", "programmer", "pages", "wizard/controller", "webupdate"})
    Scan(room, "\"([^\"\\n]*)\"", explained);
  EXPECT_GT(texts, 60);
}

TEST(HelpPages, LinkToWhatIsThere) {
  std::set<std::string> there, wanted;
  Scan("help", "<title>|<a name=\"([^\"]*)", [&](const std::string& page, const auto& anchor) {
    there.insert({page, page + "#" + anchor.captured(1).toStdString()});
  });
  Scan("help", "<a href=\"([^\"#]*)([^\"]*)", [&](const std::string& page, const auto& link) {
    const std::string to = link.captured(1).toStdString();
    wanted.insert((to.empty() ? page : to) + link.captured(2).toStdString());
  });
  EXPECT_GT(wanted.size(), 5U);
  EXPECT_THAT(there, testing::IsSupersetOf(wanted));
}

TEST(HelpWindow, ShowsGoesBackAndFindsInItsOwnPages) {
  qt::HelpWindow help;
  help::Show("Step2.htm");
  ASSERT_TRUE(QTest::qWaitFor([] { return QApplication::activeWindow() != nullptr; }));
  QWidget* const view = QApplication::activeWindow();
  auto& page = *view->findChild<QTextBrowser*>();
  auto& field = *view->findChild<QLineEdit*>();
  const auto on = [&] { return page.source().toString().toStdString(); };
  EXPECT_EQ(on(), "Step2.htm");
  for (const char* const link : {"http://there/Step1.htm", "/etc/passwd"}) {
    emit page.anchorClicked(QUrl(link));
    EXPECT_EQ(on(), "Step2.htm") << link;
  }
  emit page.anchorClicked(QUrl("Step4.htm#stopped"));
  EXPECT_EQ(on(), "Step4.htm#stopped");
  QTest::keyClick(view, Qt::Key_Left, Qt::AltModifier);
  EXPECT_EQ(on(), "Step2.htm");

  const auto find = [&](const char* words) {
    field.setText(words);
    QTest::keyClick(&field, Qt::Key_Return);
    return page.textCursor().selectedText();
  };
  EXPECT_EQ(find(" unable to  ENTER boot"), "Unable to enter boot");
  EXPECT_EQ(on(), "Step4.htm");
  const int hit = page.textCursor().position();
  EXPECT_EQ(find("xyzzy"), "Unable to enter boot");
  EXPECT_EQ(view->findChild<QLabel*>("lblFind")->text(), "Not found");
  find("unable to enter boot");
  EXPECT_EQ(page.textCursor().position(), hit) << "Round all pages and back to the only hit.";
  QTest::keyClick(&field, Qt::Key_Escape);
  EXPECT_EQ(QApplication::activeWindow(), nullptr);
}

}  // namespace
}  // namespace tarnwick::test
