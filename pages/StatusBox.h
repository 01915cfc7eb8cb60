// The status report, as the pages show it.
#pragma once

#include "widgets/Controls.h"

namespace tarnwick {

/// The text box of the status report.
class StatusBox final : public TextBox {
 public:
  explicit StatusBox(QWidget* parent);
  void ShowReport();
  /// From now on the report is shown from row `row` of `gDevices` on; 0 for all of it.
  void LookAt(std::int32_t row);
  /// Says that the status is being determined, at once, and shows the lock under which that happens.
  void ShowWaiting();
  /// `ShowWaiting`, then reads every device anew and shows the report.
  void Refresh();

 private:
  std::int32_t mRow = 0;
};

}  // namespace tarnwick
