// The real keeper of the computer's wakefulness.
#include "platform/awake.h"
#include "win32.h"

namespace tarnwick::awake {
namespace {

/// The state is the thread's own, and goes with it. That the user switches the computer off is not held up here:
/// a program without a window has no say in that.
class WakefulThread final : public IKeeper {
 public:
  WakefulThread() { Seam<IKeeper>::Install(*this); }
  ~WakefulThread() override {
    Seam<IKeeper>::Uninstall();
    LetGo();
  }
  WakefulThread(const WakefulThread&) = delete;
  WakefulThread& operator=(const WakefulThread&) = delete;

  void Keep() override { ::SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED); }
  void LetGo() override { ::SetThreadExecutionState(ES_CONTINUOUS); }
};

}  // namespace

std::unique_ptr<IKeeper> SystemKeeper() {
  return std::make_unique<WakefulThread>();
}

}  // namespace tarnwick::awake
