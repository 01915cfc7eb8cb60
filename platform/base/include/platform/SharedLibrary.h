// Shared libraries loaded at run time.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace tarnwick {

/// What the names of shared libraries end in, such as ".so".
extern const std::string_view kSharedLibraryEnding;

/// A loaded shared library; it is unloaded with its object, and its exports with it.
class SharedLibrary {
 public:
  /// Loads `path`. None, and the reason in `cause`, when there is no such file, when it is no shared library
  /// for this machine, or when it is shorter than it says itself: loading a torn file would kill the process.
  static std::unique_ptr<SharedLibrary> Open(const std::filesystem::path& path, std::string& cause);

  /// Loads the library of that name, such as "libcurl.so.4", from where the system keeps its own. It
  /// stays loaded to the end of the process. None, and the reason in `cause`, when the system does not have
  /// it.
  static std::unique_ptr<SharedLibrary> OpenSystem(const std::string& name, std::string& cause);

  ~SharedLibrary();
  SharedLibrary(const SharedLibrary&) = delete;
  SharedLibrary& operator=(const SharedLibrary&) = delete;

  /// The export of that decorated name, "name@version", or, without a version, of that name in its
  /// default version; null when the library has none.
  void* Find(std::string_view decorated) const;

 private:
  explicit SharedLibrary(void* handle) : mHandle(handle) {}

  void* mHandle;
};

/// The folder of the program or shared library that `code`, the address of one of its functions, belongs to;
/// empty where that cannot be told.
std::filesystem::path FolderOfCode(const void* code);

}  // namespace tarnwick
