// Marks in the list of packages: which fit the mount on the line.
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <filesystem>
#include <functional>

#include "programmer/PackageJudge.h"

namespace tarnwick {

class ListBox;

/// Judges the packages of a list one after the other while nothing else is done, in slices that no hand
/// feels, and puts a sign in front of each. While the page is locked or not on view it rests.
class PackageMarks : public QObject {
 public:
  /// `path` gives the package of a row. `list` outlives this.
  PackageMarks(ListBox& list, std::function<std::filesystem::path(int)> path);

  /// Begins anew: the list, or the mount, is another one.
  void Restart();
  /// What is to be said of a row now.
  std::string Say(int row);

 private:
  void JudgeSome();
  void Mark(int row, const PackageOpinion& opinion);

  ListBox& mList;
  std::function<std::filesystem::path(int)> mPath;
  PackageJudge mJudge;
  QTimer mTimer;
  int mNext = 0;
};

}  // namespace tarnwick
