// The second page: the serial port. Left forward, it opens the link and reads the bus.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QTimer>

#include "wizard/PageWindow.h"

namespace tarnwick {

class Step2 final : public PageWindow {
 public:
  Step2();

  void Form_Load() override;
  QWidget* FirstControl() override { return cboComPort; }
  void BeforePageShow(CWizard& wizard, std::int16_t currentStep) override;
  void BeforePageHide(CWizard& wizard, std::int16_t nextStep, bool& cancel) override;

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  void ListPorts();
  /// The row of the one USB adapter in the list; 0 when there is none or more than one.
  int OnlyAdapter() const;
  /// Shows what is known of the last try, in place of the note; an empty text brings that back.
  void ShowKnown(const std::string& text);
  /// One of the three stands below the port: how to get the right to it, what is known, the note. There is
  /// no room for more, and without the right or the mount the note is of no use.
  void SettleNotes();
  /// Puts ports that have come since at their places and tells anew what is known of each. Nothing
  /// goes away, and the selection stays.
  void AddPorts();
  /// Shows how to get the right to open the selected port, where the user has none, in place of the
  /// note: there is no room for both, and without the right the note is of no use.
  void ShowRights();

  QLabel* Label1 = nullptr;
  QLabel* Label2 = nullptr;
  QLabel* lblDevice =
      nullptr;  ///< Device and product of the selected port; that the mount is asked, meanwhile.
  QLabel* lblKnown = nullptr;  ///< What is known of the last try.
  QLabel* lblRights = nullptr;
  QComboBox* cboComPort = nullptr;
  QTimer* mWatch = nullptr;  ///< Runs while the page is on view.
  bool mShown = false;       ///< The list was made before: the choice is the user's.
};

}  // namespace tarnwick
