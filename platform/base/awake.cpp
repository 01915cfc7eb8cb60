#include "platform/awake.h"

namespace tarnwick::awake {
namespace {
IKeeper* gKeeper = nullptr;
}

void Install(IKeeper& keeper) {
  gKeeper = &keeper;
}
void Uninstall() {
  gKeeper = nullptr;
}

Hold::Hold() {
  if (gKeeper != nullptr) gKeeper->Keep();
}
Hold::~Hold() {
  if (gKeeper != nullptr) gKeeper->LetGo();
}

}  // namespace tarnwick::awake
