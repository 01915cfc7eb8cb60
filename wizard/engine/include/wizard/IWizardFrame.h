// What the wizard engine needs of its window.
#pragma once

#include <optional>
#include <string>

namespace tarnwick {

class CWizard;
class IWizardPage;

/// The four buttons of the frame.
enum class FrameButton { cmdHelp, cmdStepBack, cmdStepFwd, cmdTerminate };

/// Whatever a page's window hung under before it was attached; opaque to the engine, may be null.
using WindowHandle = void*;

class IWizardFrame {
 public:
  virtual ~IWizardFrame() = default;

  /// Tells the frame whom its events go to. Called once, by the wizard's creation; `wizard` outlives
  /// every event.
  virtual void Bind(CWizard& wizard) = 0;
  /// The frame exists afterwards, invisible, with its controls.
  virtual void LoadFrame() = 0;
  virtual void ShowFrame() = 0;
  /// The page's window exists afterwards, with its controls, and its load event has run.
  virtual void LoadPage(IWizardPage& page) = 0;
  /// Makes the page's window a child of the page area, at its top left corner, size unchanged.
  /// Gives the parent that it had before.
  virtual WindowHandle AttachPage(IWizardPage& page) = 0;
  virtual void DetachPage(IWizardPage& page, WindowHandle oldParent) = 0;
  /// Destroys the page's window after its unload event. The page object stays its owner's.
  virtual void UnloadPage(IWizardPage& page) = 0;
  virtual void SetPageVisible(IWizardPage& page, bool visible) = 0;
  /// Fits the frame round `page` (none: only what needs no page) and, where the frame's rectangle
  /// changed and `centre` is set, centres it on the screen and moves the pointer onto `lastButton`.
  virtual void LayoutFrame(IWizardPage* page, bool centre, std::optional<FrameButton> lastButton) = 0;

  virtual bool Enabled(FrameButton button) const = 0;
  virtual void Enabled(FrameButton button, bool enabled) = 0;
  virtual std::string Caption(FrameButton button) const = 0;
  virtual void Caption(FrameButton button, const std::string& caption) = 0;
  virtual bool Default(FrameButton button) const = 0;
  virtual void Default(FrameButton button, bool isDefault) = 0;
  virtual void TabPosition(FrameButton button, int position) = 0;
  virtual void FocusButton(FrameButton button) = 0;

  /// The user is about to be locked out: the focus is noted and parked, and from now on what is done to
  /// anything but the terminate button and the close box is discarded.
  virtual void BeforeLock() = 0;
  /// The lock is about to end: what was done meanwhile to locked things is discarded.
  virtual void BeforeUnlock() = 0;
  /// A step ended. What was done during it was meant for what was on view before, and is discarded.
  virtual void AfterStep() = 0;
  /// With false the lock begins to show; with true it has ended, and the focus is back where it was.
  virtual void PageAreaEnabled(bool enabled) = 0;
  /// Paints what is to be seen of a lock, before work that lets nothing be painted.
  virtual void ShowLock() = 0;
  virtual void PageAreaTabPosition(int position) = 0;
  /// The page area takes the input focus, which goes on to the window of the current page.
  virtual void FocusPageArea() = 0;
  /// Moves the input focus to the page's window.
  virtual void FocusPage(IWizardPage& page) = 0;

  /// The title of the frame's window. Comes before `LoadFrame`.
  virtual void FrameCaption(const std::string& caption) = 0;
  /// Hourglass pointer over the frame when on, the default one when off.
  virtual void SetWaitPointer(bool on) = 0;
  /// Handles the window system's pending events once; without a lock only what is to be painted, so that no
  /// callback that pumps is interrupted by what it serves.
  virtual void PumpEvents() = 0;
  /// Asks the frame to close, as its close box does: `CWizard::Form_QueryUnload` follows.
  virtual void RequestClose() = 0;
  /// Shows the "Shutting Down ..." label over the frame.
  virtual void ShowShutdown() = 0;
};

}  // namespace tarnwick
