#include "platform/qt/CopyRecord.h"

#include <QClipboard>
#include <QGuiApplication>

#include "platform/record.h"

namespace tarnwick::qt {

void CopyRecord() {
  QGuiApplication::clipboard()->setText(QString::fromStdString(record::LastPart()));
}

}  // namespace tarnwick::qt
