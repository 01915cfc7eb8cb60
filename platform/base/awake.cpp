#include "platform/awake.h"

namespace tarnwick::awake {

Hold::Hold() {
  if (IKeeper* const keeper = Seam<IKeeper>::Used()) keeper->Keep();
}
Hold::~Hold() {
  if (IKeeper* const keeper = Seam<IKeeper>::Used()) keeper->LetGo();
}

}  // namespace tarnwick::awake
