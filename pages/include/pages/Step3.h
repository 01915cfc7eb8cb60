// The third page: the firmware package. It leads on only with a package that loads and fits.
#pragma once

#include <QLabel>
#include <QPushButton>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "wizard/PageWindow.h"

namespace tarnwick {

class ListBox;
class PackageMarks;
class StatusBox;
class TextBox;
struct PackageSignature;

class Step3 final : public PageWindow {
 public:
  Step3();
  ~Step3() override;

  void Form_Load() override;
  QWidget* FirstControl() override;
  void BeforePageShow(CWizard& wizard, std::int16_t currentStep) override;
  void BeforePageHide(CWizard& wizard, std::int16_t nextStep, bool& cancel) override;

 protected:
  /// Takes packages from the desktop where the wizard is not locked, copies them into the folder and selects
  /// the last.
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void BringPackages(const std::vector<std::filesystem::path>& packages);
  /// Lists the packages of `gFirmwareDir` and selects `selectName`, ignoring case, else the first.
  void ListFirmware(const std::string& selectName);
  void lstFirmware_Click();
  void EnableButtons(bool enabled);
  void cmdRefresh_Click();
  /// The web update window; what was current there is selected here afterwards.
  void cmdWebUpdate_Click();
  /// The selected package's path. Something must be selected.
  std::filesystem::path SelectedPackage() const;
  std::filesystem::path PackageOf(int row) const;
  /// The two lines under the list: who signed the selected package, and whether it fits the mount.
  void ShowOpinions();
  void ShowSignature(const PackageSignature& signature);
  void ShowFit();
  /// Loads the selected package and holds it against the devices. False after a message, and where it is no
  /// longer signed as the line under the list told, which then tells anew.
  bool AcceptPackage();
  void LayOutControls();

  QLabel* Label1 = nullptr;
  ListBox* lstFirmware = nullptr;
  QPushButton* cmdWebUpdate = nullptr;
  QLabel* lblSignature = nullptr;
  QLabel* lblFit = nullptr;
  TextBox* txtFirmware = nullptr;
  StatusBox* txtStatus = nullptr;
  QPushButton* cmdRefresh = nullptr;
  std::unique_ptr<PackageMarks> mMarks;
};

}  // namespace tarnwick
