// The web update window before a scripted site, clicked and typed at, and the page that opens it.
#include <gmock/gmock.h>

#include <QTableView>
#include <QTimer>

#include "app/ProgramSettings.h"
#include "platform/FileLock.h"
#include "platform/process.h"
#include "support/HttpDouble.h"
#include "support/ProgramTest.h"
#include "support/SignedRelease.h"
#include "webupdate/Journal.h"
#include "webupdate/ProgramInstaller.h"
#include "webupdate/frmWebUpdate.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;

constexpr const char* kSite = "/firmware/catalogue/";
constexpr const char* kText =
    "@bravo.qal,2005-03-01,2000\r\nAbout bravo\r\n@Alpha.QAL,2004-02-29,6\r\nAbout Alpha\r\n"
    "%focus.qal,2005-01-01,3\r\nFor accessories\r\n@delta.qal,soon,x";

class WebUpdateTest : public ProgramTest {
 protected:
  WebUpdateTest() {
    WriteFile(Folder() / "bravo.qal", "old bravo");
    WriteFile(Folder() / "zulu.qal", "zulu");
    WriteFile(Folder() / "zulu.txt", "Note of zulu\r\n");
    site.replies[std::string(kSite) + "list.txt"] = kText;
    site.replies[std::string(kSite) + "Alpha.QAL"] = "alpha!";
    gFirmwareDir = Folder();
    LoadSettings();
    web.emplace(nullptr);
  }
  void Open() {
    web->Form_Load();
    web->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&*web));
  }
  std::filesystem::path Folder() const { return folder / "MotorControllers"; }
  template <class Widget = QWidget>
  Widget& On(const char* name) {
    return *web->findChild<Widget*>(QLatin1String(name));
  }
  void Press(const char* name) { QTest::mouseClick(&On(name), Qt::LeftButton); }
  void Choose(int row) {
    auto& grid = On<QTableView>("Grid");
    const QPoint at = grid.visualRect(grid.model()->index(row - 1, 0)).center();
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, at);
  }
  /// Each row as "name date size place colour".
  std::vector<std::string> Rows() {
    std::vector<std::string> rows;
    const QAbstractItemModel& model = *On<QTableView>("Grid").model();
    for (int row = 0; row < model.rowCount(); ++row) {
      QString cells;
      for (int column = 0; column < 4; ++column) cells += model.index(row, column).data().toString() + ' ';
      cells += model.index(row, 3).data(Qt::BackgroundRole).value<QColor>().name();
      rows.push_back(cells.toStdString());
    }
    return rows;
  }
  /// Which of the buttons are on, as Download, Remove, Done; then the bar's text and the description.
  std::string State() {
    std::string state;
    for (const char* const name : {"cmdDownload", "cmdRemove", "cmdDone"})
      state += On(name).isEnabled() ? '1' : '0';
    return state + On("progress").accessibleDescription().toStdString() + "|" +
           On<QPlainTextEdit>("txtDescription").toPlainText().toStdString();
  }

  HttpDouble site;
  std::optional<frmWebUpdate> web;
};

TEST_F(WebUpdateTest, OpensWithBothLists) {
  WriteFile(folder / "Tarnwick.ini", "[TARNWICK]\r\nURL=Me:Secret@other.example/a/b/list.txt\r\n");
  LoadSettings();
  site.replies["/a/b/list.txt"] = kText;
  Open();
  EXPECT_EQ(web->windowTitle(), " Web Updates [other.example/a/b/list.txt]");
  EXPECT_THAT(Rows(),
              ElementsAre("Alpha 2004-02-29 6 Remote #ffc080", "bravo 2005-03-01 2000 Local #ffffff",
                          "delta soon 0 Remote #ffc080", testing::MatchesRegex("zulu .* 4 Local #ffffff")));
  EXPECT_EQ(State(), "001|");
  QTest::keyClick(&On("Grid"), Qt::Key_Down);
  EXPECT_EQ(State(), "101|About Alpha\n") << "The first step down chooses the first row.";
  QTest::keyClick(&On("Grid"), Qt::Key_End, Qt::ControlModifier);
  EXPECT_EQ(State(), "011|Note of zulu\n");
  QTest::keyClick(&*web, Qt::Key_Escape);
  EXPECT_FALSE(web->isVisible());
  EXPECT_EQ(web->FirmwareText(), "zulu");
}

TEST_F(WebUpdateTest, OpensWithNeitherSiteNorFolder) {
  site.replies.clear();
  std::filesystem::remove_all(Folder());
  Open();
  EXPECT_EQ(web->windowTitle(), "Web Updates");
  EXPECT_EQ(Said().size(), 1U);
  EXPECT_THAT(Rows(), testing::IsEmpty());
  QTest::keyClick(&On("Grid"), Qt::Key_Down);
  EXPECT_EQ(State(), "001|");
  Press("cmdDone");
  EXPECT_EQ(web->FirmwareText(), "");
}

TEST_F(WebUpdateTest, TransferIsLeftAloneUntilItEnds) {
  Open();
  Choose(1);
  bool during = false;
  onPump = [&] {
    if (during || !State().starts_with("000")) return;
    during = true;
    EXPECT_EQ(State(), "000100%|About Alpha\n");
    Choose(2);
    EXPECT_TRUE(web->isVisible() && On("cmdCancel").isVisible());
    EXPECT_EQ(State(), "000100%|About bravo\n");
  };
  Press("cmdDownload");
  onPump = {};
  EXPECT_TRUE(during);
  EXPECT_EQ(State(), "011Download Complete|About bravo\n") << "The row chosen meanwhile.";
  Choose(3);
  Press("cmdDownload");
  EXPECT_EQ(State(), "101|") << "Not on the site.";
  EXPECT_EQ(Said().size(), 1U);
  EXPECT_EQ(On<QLabel>("lblAnswer").text(), "The site does not have the file.");
}

TEST_F(WebUpdateTest, TransferIsGivenUpByButtonKeyOrCloseBox) {
  Open();
  Choose(1);
  const std::function<void()> ways[] = {
      [&] { Press("cmdCancel"); }, [&] { QTest::keyClick(&*web, Qt::Key_Escape); }, [&] { web->close(); }};
  for (const auto& giveUp : ways) {
    onPump = [&] {
      if (On("cmdCancel").isVisible()) giveUp();
    };
    Press("cmdDownload");
    onPump = {};
    EXPECT_TRUE(web->isVisible() && !On("cmdCancel").isVisible());
    EXPECT_EQ(On<QLabel>("lblAnswer").text(), "Given up.");
    EXPECT_TRUE(State().starts_with("101")) << State();
    EXPECT_FALSE(std::filesystem::exists(Folder() / "Alpha.QAL"));
  }
  EXPECT_THAT(Said(), testing::IsEmpty());
}

TEST_F(WebUpdateTest, ASmallWindowGivesUpWhatIsAskedBeforeTheWindowIsThere) {
  QWidget owner;
  owner.show();
  web.emplace(&owner);
  site.waits = [] { return true; };
  bool seen = false;
  onPump = [&] {
    auto* const box = owner.findChild<QDialog*>(QStringLiteral("frmWaiting"));
    if (box == nullptr || seen) return;
    seen = true;
    QTest::keyClick(box, Qt::Key_Escape);
  };
  Open();
  onPump = {};
  EXPECT_TRUE(seen);
  EXPECT_EQ(Rows().size(), 2U) << "The local list.";
  EXPECT_EQ(On<QLabel>("lblAnswer").text(), "Given up.");
  EXPECT_THAT(Said(), testing::IsEmpty());
  web.reset();
}

TEST_F(WebUpdateTest, RemovesAfterAQuestion) {
  Open();
  Choose(2);
  user.answers = {ui::Answer::No};
  Press("cmdRemove");
  EXPECT_EQ(State(), "011|About bravo\n");
  Press("cmdRemove");
  EXPECT_EQ(State(), "101|About bravo\n");
  const std::string question = "Are you sure you want to Remove this file from your computer?";
  EXPECT_THAT(Said(), ElementsAre("YesNo ?|" + question, "YesNo ?|" + question));
  Choose(4);
  Press("cmdRemove");
  EXPECT_THAT(Said(), ElementsAre("YesNo ?|Warning: This firmware is no longer available online.\r\nIf you "
                                  "remove it, you will not be able re-download it.\r\n\r\n" +
                                  question));
  EXPECT_EQ(Rows().size(), 3U);
  EXPECT_EQ(State(), "101|") << "The row above is current.";
  EXPECT_TRUE(std::filesystem::is_empty(Folder()));
}

TEST_F(WebUpdateTest, PageSelectsWhatWasCurrent) {
  Start();
  WalkTo(3, "None");
  QTimer closing;
  QObject::connect(&closing, &QTimer::timeout, [&] {
    auto* const dialog = window.findChild<frmWebUpdate*>();
    if (dialog == nullptr || !dialog->isVisible()) return;
    EXPECT_FALSE(window.isActiveWindow());
    dialog->findChild<QTableView*>("Grid")->selectRow(3);
    dialog->close();
  });
  closing.start(10);
  Click("cmdWebUpdate");
  EXPECT_EQ(Items("lstFirmware").at(static_cast<std::size_t>(Selected("lstFirmware"))), "zulu.qal");
  ExpectAtRest();
}

TEST_F(WebUpdateTest, ANewerProgramIsOfferedAndInstalledOnlyWhenAllIsRight) {
  SignedRelease offer;
  TrustKey(offer.keys.open);
  offer.Add("Tarnwick.EXE", "2.2.5", "new");
  offer.Add("Tarnwick.DLL", "0.0.0", "library");
  site.replies[std::string(kSite) + "list.txt"] = offer.Text() + kText;
  site.replies[std::string(kSite) + "Tarnwick.DLL"] = "library";
  const std::string question =
      "YesNo ?|A newer version of this program is available.\r\n\r\nTarnwick.EXE  v2.2.5\r\n\r\n"
      "Do you wish to download and install?";
  bool started = false;
  const InPlace<process::Starter> starter{
      process::Starter{[&](const process::Command&) { return started = true; }}};
  std::string during;
  onPump = [&] {
    if (!web->isVisible()) return;
    Choose(1);
    during = State();
  };
  const auto load = [&](const std::string& file) {
    site.replies[std::string(kSite) + "Tarnwick.EXE"] = file;
    return web->Form_Load();
  };
  user.answers = {ui::Answer::No};
  EXPECT_TRUE(load("new"));
  EXPECT_THAT(Said(), ElementsAre(question));
  EXPECT_EQ(during, "");
  FileLock other;
  EXPECT_FALSE(other.Open(folder / "WebUpdate.lock") || other.Share());
  EXPECT_TRUE(load("new"));
  EXPECT_THAT(Said(), ElementsAre("Ok !|A newer version of this program is available.\r\n\r\nClose all other "
                                  "windows of this program, then open this one again to install it."));
  other.Release();
  EXPECT_TRUE(load("damaged"));
  EXPECT_THAT(Said(), ElementsAre(question, "Ok !|Error updating program!"));
  EXPECT_TRUE(State().starts_with("001") && !web->isVisible() && !started);
  EXPECT_FALSE(load("new"));
  EXPECT_THAT(Said(), ElementsAre(question,
                                  "Ok i|Program downloaded successfully ...\r\n\r\n"
                                  "Press Ok to Run the New Version."));
  EXPECT_EQ(during, "000Installing Program ...|About Alpha\n");
  EXPECT_TRUE(web->isVisible() && started && ReadJournal(folder.Path()));
  onPump = {};
}

}  // namespace
}  // namespace tarnwick::test
