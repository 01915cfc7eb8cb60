// The progress display: a track, the bar over it, and the text over both.
#pragma once

#include <QStaticText>
#include <QWidget>

namespace tarnwick {

/// Two painted rectangles, the track and the bar over it, and a text over both in the colour that can be read
/// on each. Setting what is shown already repaints nothing.
class ProgressBar final : public QWidget {
 public:
  explicit ProgressBar(QWidget* parent);

  void Label(const QString& text);
  /// What is waited for, behind the text; empty for nothing.
  void Waiting(const QString& what);
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
  void Show(const QString& text);

  QString mLabel, mWaiting;
  QStaticText mText;  ///< Keeps its layout: as a rule a text is painted several times before it changes.
  double mFraction = 0.0;
  int mBarWidth = 0;
};

}  // namespace tarnwick
