// To which window boxes belong.
#pragma once

#include <QWidget>

namespace tarnwick::qt {

/// From its creation on boxes belong to `window`, and block just that and what it belongs to itself, as long
/// as it is on view; then to the window before it again. These objects go in the reverse of their order.
class BoxOwner {
 public:
  explicit BoxOwner(QWidget& window);
  ~BoxOwner();
  BoxOwner(const BoxOwner&) = delete;
  BoxOwner& operator=(const BoxOwner&) = delete;

  /// The window in charge now; null when there is none on view.
  static QWidget* Current();

 private:
  QWidget& mWindow;
};

}  // namespace tarnwick::qt
