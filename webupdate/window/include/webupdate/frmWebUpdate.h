// The web update window: what the update site offers and what is in the firmware folder, fetched and
// removed row by row.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/qt/BoxOwner.h"
#include "webupdate/Catalogue.h"
#include "webupdate/Refusal.h"

namespace tarnwick {

class GivingUp;
class HTTPClass;
class PackageGrid;
class ProgressBar;
class TextBox;

/// Reads the site's parts and the firmware folder of the settings, and the chosen class of device.
///
/// Each opening fetches the catalogue anew. While something is being transferred, which the user can give up,
/// the window cannot be closed, and its owner, which it blocks once it is shown, has to be locked by the
/// caller until then.
class frmWebUpdate final : public QDialog {
 public:
  explicit frmWebUpdate(QWidget* owner);
  ~frmWebUpdate() override;

  /// Loads the lists, shows the window before its owner, and returns when it has been unloaded. Ends the
  /// program instead when a newer one has been fetched.
  void ShowModal();
  /// The name, without extension, of the package that was current when the window unloaded; empty when
  /// there was none.
  const std::string& FirmwareText() const { return mFirmwareText; }

  /// Loads the lists and offers a newer program, which talks to the site and to the user. `ShowModal` begins
  /// with it. False when the program is to end for a newer one: then nothing more is done with this window.
  bool Form_Load();
  /// The close box and Escape are the Done button, and give up what is being fetched.
  void reject() override;

 private:
  void MakeControls();
  void LayOutControls();
  void OrderControls();
  void CentreOnScreen();

  void LoadCatalogue();
  /// True when a newer program waits for this one to end.
  bool OfferNewProgram();
  bool InstallNewProgram(WhyNot& why);
  void FillGrid();
  void ShowCurrentRow();
  void HTTP_Progress(std::int32_t count);
  void cmdDownload_Click();
  void cmdRemove_Click();
  void cmdDone_Click();
  void Form_Unload();

  /// A new object for one piece of work, which tells this window of its progress.
  void NewHTTP();
  /// Runs `work` as one transfer, with the pointer that says so.
  void Transfer(const std::function<void()>& work);
  /// From here to `EndGivingUp` the user can give up.
  void BeginGivingUp();
  void EndGivingUp();
  void ShowAnswer(const std::string& line);
  /// Takes the row's package off the folder, and off the list where the site does not have it either.
  void RemoveRow(std::int32_t row);
  /// Which buttons are live for the current row, and which of them Enter presses.
  void SettleButtons();

  qt::BoxOwner mBoxes{*this};
  Catalogue mCatalogue;
  std::int32_t ExpectedSize = 0;  ///< Bytes that the progress display divides by; 0 for no percentage.
  bool Loading = false;           ///< The lists are being made; the grid is not listened to.
  bool mTransfer = false;         ///< A file is being fetched: buttons and `ExpectedSize` are its own.
  std::unique_ptr<HTTPClass> HTTP;
  std::unique_ptr<GivingUp> mGivingUp;  ///< While something is being fetched.
  std::string mFirmwareText;

  PackageGrid* Grid = nullptr;
  TextBox* txtDescription = nullptr;
  ProgressBar* mBar = nullptr;  ///< Shape1, Shape2 and lblPacifier in one.
  QPushButton* cmdHelp = nullptr;
  QPushButton* cmdDownload = nullptr;
  QPushButton* cmdRemove = nullptr;
  QPushButton* cmdDone = nullptr;
  QPushButton* cmdCancel = nullptr;  ///< On view while something is being fetched.
  QLabel* lblAnswer = nullptr;       ///< What the last answer of the site was, where it was not good.
};

}  // namespace tarnwick
