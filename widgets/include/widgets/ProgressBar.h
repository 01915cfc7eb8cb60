// The progress display: a track, the bar over it, and the text over both.
#pragma once

#include <QStaticText>
#include <QWidget>

namespace tarnwick {

/// Two painted rectangles and a text that stays readable on either. Nothing is repainted that shows
/// already.
class ProgressBar final : public QWidget {
 public:
  explicit ProgressBar(QWidget* parent);

  void Label(const QString& text);
  /// Share of the track, 0 to 1.
  void Bar(double fraction);
  /// What is shown, 0 to 100.
  int Percent() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  QRect Track() const { return rect().adjusted(1, 1, -1, -1); }
  int WidthOf(double fraction) const;

  QStaticText mText;  ///< Laid out once, for each text is painted four times as a rule.
  double mFraction = 0.0;
  int mBarWidth = 0;
};

}  // namespace tarnwick
