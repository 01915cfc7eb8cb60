// Giving up what is being fetched.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <memory>

#include "platform/http.h"

namespace tarnwick {

/// For its lifetime, events are handled while the site is awaited, so that the user can give up. As long as
/// `window` is not on view, a small window says after a second what is awaited, and has the button.
class GivingUp {
 public:
  explicit GivingUp(QWidget& window);

  void GiveUp() { mGivenUp = true; }

 private:
  void Wait();
  void ShowBox();

  QWidget& mWindow;
  QElapsedTimer mTime;
  std::unique_ptr<QDialog> mBox;
  bool mGivenUp = false;
  InPlace<http::Waiting> mWaiting{{[this] { Wait(); }, [this] { return mGivenUp; }}};
};

}  // namespace tarnwick
