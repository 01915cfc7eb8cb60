#include "ProgressAccess.h"

#include <QAccessibleWidget>

#include "widgets/ProgressBar.h"

namespace tarnwick {
namespace {

class ProgressAccess final : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit ProgressAccess(ProgressBar* bar) : QAccessibleWidget(bar, QAccessible::ProgressBar), mBar(*bar) {}

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }
  QVariant currentValue() const override { return mBar.Percent(); }
  QVariant minimumValue() const override { return 0; }
  QVariant maximumValue() const override { return 100; }
  QVariant minimumStepSize() const override { return 1; }
  void setCurrentValue(const QVariant&) override {}  // It only shows.

 private:
  const ProgressBar& mBar;
};

QAccessibleInterface* Make(const QString&, QObject* object) {
  auto* const bar = dynamic_cast<ProgressBar*>(object);
  return bar == nullptr ? nullptr : new ProgressAccess(bar);
}

}  // namespace

void TellScreenReadersOfProgress() {
  QAccessible::installFactory(Make);
}

}  // namespace tarnwick
