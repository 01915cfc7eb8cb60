// The picture at the left of the frame: a telescope on its mount under a night sky.
#pragma once

#include <QPixmap>
#include <QWidget>

namespace tarnwick {

/// Drawn, not loaded, so that it is crisp at any scale. Painted once per size and device scale.
class SplashPicture final : public QWidget {
 public:
  explicit SplashPicture(QWidget* parent);

  /// Size of the picture at the base font, in device-independent pixels.
  static constexpr int kWidth = 120;
  static constexpr int kHeight = 226;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QPixmap mPicture;
};

}  // namespace tarnwick
