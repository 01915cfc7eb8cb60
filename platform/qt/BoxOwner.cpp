#include "platform/qt/BoxOwner.h"

#include <algorithm>
#include <vector>

namespace tarnwick::qt {
namespace {

std::vector<QWidget*> gOwners;

}  // namespace

BoxOwner::BoxOwner(QWidget& window) : mWindow(window) {
  gOwners.push_back(&mWindow);
}

BoxOwner::~BoxOwner() {
  std::erase(gOwners, &mWindow);
}

QWidget* BoxOwner::Current() {
  const auto found =
      std::find_if(gOwners.rbegin(), gOwners.rend(), [](const QWidget* each) { return each->isVisible(); });
  return found == gOwners.rend() ? nullptr : *found;
}

}  // namespace tarnwick::qt
