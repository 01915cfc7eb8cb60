// What a maker of packages should know of one before owners get it: what the format passes over without a
// word. The loader stays as lenient as docs/package-format.md tells; nothing here is an error of it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "firmware/QALclass.h"

namespace tarnwick {

/// One remark on a package.
struct QalRemark {
  std::int32_t Line = 0;  ///< From 1, as the loader counts; 0 for the package as a whole.
  /// Words are lost, or no mount can take the package: it is not published.
  bool Harmful = false;
  std::string What;  ///< A sentence without its full stop, in Windows-1252 as the package.
};

/// A whole load looks at this many remarks at most; the last one then says that there are more.
inline constexpr std::size_t kMostRemarks = 100;

/// Looks at the text of a package line by line. Memory follows the keys that it declares, and no line is
/// kept whole.
class QalLint {
 public:
  /// `fileName` is the name that the package's file has, without its folder.
  explicit QalLint(std::string fileName);
  ~QalLint();
  QalLint(const QalLint&) = delete;
  QalLint& operator=(const QalLint&) = delete;

  /// Takes the next piece of the text. Pieces may be cut anywhere.
  void Add(std::string_view piece);
  /// All remarks, by line. `package` is what a load of the same text left. To be called once, at the end.
  std::vector<QalRemark> Finish(const QALclass& package);

 private:
  struct State;
  std::unique_ptr<State> mState;
};

/// The remarks on a text, and on the file of `package`, which has just been loaded from it. A file that
/// cannot be read has one remark, that it cannot.
std::vector<QalRemark> LintText(std::string_view text, const std::string& fileName, const QALclass& package);
std::vector<QalRemark> LintFile(const std::filesystem::path& file, const QALclass& package);

}  // namespace tarnwick
