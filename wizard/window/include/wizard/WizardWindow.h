// The frame's window: splash picture, page area, bevel line and four buttons.
#pragma once

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QWidget>
#include <array>
#include <map>
#include <string>

#include "platform/qt/BoxOwner.h"
#include "platform/qt/InputGate.h"
#include "wizard/FrameLayout.h"
#include "wizard/IWizardFrame.h"

namespace tarnwick {

class SplashPicture;

/// `IWizardFrame` on Qt. It shows and calls; every decision is the engine's.
///
/// Keys act when they are released, wherever the focus is. Enter is the default button, also on a page's own
/// button; on one of the four it presses that one. While the user is locked out it does nothing.
class WizardWindow final : public QWidget, public IWizardFrame, public qt::ILockable {
 public:
  WizardWindow();
  ~WizardWindow() override;

  void Bind(CWizard& wizard) override { mWizard = &wizard; }
  void LoadFrame() override;
  void ShowFrame() override;
  void LoadPage(IWizardPage& page) override;
  WindowHandle AttachPage(IWizardPage& page) override;
  void DetachPage(IWizardPage& page, WindowHandle oldParent) override;
  void UnloadPage(IWizardPage& page) override;
  void SetPageVisible(IWizardPage& page, bool visible) override;
  void LayoutFrame(IWizardPage* page, bool centre, std::optional<FrameButton> lastButton) override;

  bool Enabled(FrameButton button) const override;
  void Enabled(FrameButton button, bool enabled) override;
  std::string Caption(FrameButton button) const override;
  void Caption(FrameButton button, const std::string& caption) override;
  bool Default(FrameButton button) const override;
  void Default(FrameButton button, bool isDefault) override;
  void TabPosition(FrameButton button, int position) override;
  void FocusButton(FrameButton button) override;

  void BeforeLock() override;
  void BeforeUnlock() override;
  void AfterStep() override;
  /// A locked page turns grey if that lasts, or `ShowLock` says so.
  void PageAreaEnabled(bool enabled) override;
  void ShowLock() override;
  void PageAreaTabPosition(int position) override;
  void FocusPageArea() override;
  void FocusPage(IWizardPage& page) override;

  void FrameCaption(const std::string& caption) override;
  void SetWaitPointer(bool on) override;
  void PumpEvents() override;
  void RequestClose() override;
  void ShowShutdown() override;

  bool IsLockedAt(QPoint place) const override;
  bool IsLockedFor(const QKeyEvent& key) const override;

 protected:
  /// Sees the window's keys, and the tool tips of the four buttons.
  bool eventFilter(QObject* watched, QEvent* event) override;
  /// Within a lock the focus goes to nothing but the terminate button.
  bool focusNextPrevChild(bool next) override;
  void closeEvent(QCloseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  struct Button {
    QPushButton* widget = nullptr;
    std::string caption;  ///< As the engine set it; a style may add to what the widget shows.
    int tabPosition = 0;
  };

  void MakeButton(FrameButton button, const char* name, const std::string& caption);
  const Button& At(FrameButton button) const { return mButtons[static_cast<std::size_t>(button)]; }
  Button& At(FrameButton button) { return mButtons[static_cast<std::size_t>(button)]; }
  void Place(const FrameLayout& layout);
  void CentreOnScreen();
  void CenterCursorOn(std::optional<FrameButton> button);
  void ApplyTabOrder();
  bool KeyPressed(int key, Qt::KeyboardModifiers modifiers);
  bool KeyReleased(int key);
  void PressEnter();
  static bool IsElsewhere(const QPushButton& button);

  CWizard* mWizard = nullptr;
  qt::BoxOwner mBoxes{*this};
  std::array<Button, 4> mButtons;
  QWidget* picPage = nullptr;
  SplashPicture* picSplash = nullptr;
  QLabel* lblShutdown = nullptr;
  FrameLayout mLayout;
  bool mLocked = false;
  bool mDiscards = false;  ///< What was done during a step is being discarded.
  QTimer mGreying;
  QPointer<QWidget> mFocusBeforeLock;
  std::map<int, Qt::KeyboardModifiers> mPressed;  ///< Keys that are down, with what was held then.
};

}  // namespace tarnwick
