// The one form in which a test, or another face of the program, puts something of its own in the place of
// what the system offers.
#pragma once

#include <utility>

namespace tarnwick {

/// A place for one implementation of `Interface`, as `Seam<clock::IClock>`.
template <class Interface>
class Seam {
 public:
  /// Puts `used` in place of what was used before; it must outlive its use.
  static void Install(Interface& used) { sUsed = &used; }
  /// Back to the state before the first `Install`.
  static void Uninstall() { sUsed = nullptr; }
  /// What is in place; null when nothing is.
  static Interface* Used() { return sUsed; }
  /// What is in place, else `standard`.
  static Interface& UsedOr(Interface& standard) { return sUsed == nullptr ? standard : *sUsed; }

 private:
  static inline Interface* sUsed = nullptr;
};

/// An `Implementation` that is in place for the lifetime of this object.
template <class Implementation>
class InPlace {
 public:
  explicit InPlace(Implementation used) : mUsed(std::move(used)) { Seam<Implementation>::Install(mUsed); }
  ~InPlace() { Seam<Implementation>::Uninstall(); }
  InPlace(const InPlace&) = delete;
  InPlace& operator=(const InPlace&) = delete;

 private:
  Implementation mUsed;
};

}  // namespace tarnwick
