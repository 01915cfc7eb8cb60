#include "tour/MountProcess.h"

#include <QElapsedTimer>

namespace tarnwick::tour {
namespace {

constexpr int kPatience = 5000;  // milliseconds

}  // namespace

void MountProcess::Stop() {
  mProcess.terminate();
  mProcess.waitForFinished(kPatience);
}

bool MountProcess::Start(const QString& program, const QStringList& arguments) {
  mProcess.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  mProcess.start(program, arguments);
  return mProcess.waitForReadyRead(kPatience) && mProcess.readLine().startsWith("ready");
}

void MountProcess::PullCable(int afterBytes) {
  Ask(QStringLiteral("fault pull %1").arg(afterBytes));
}

void MountProcess::State(std::int32_t address, const char* state) {
  Ask(QStringLiteral("state %1 %2").arg(address).arg(QLatin1String(state)));
}

void MountProcess::Poke(std::int32_t address, std::int32_t word, std::int32_t value) {
  Ask(QStringLiteral("poke %1 %2 %3").arg(address).arg(word).arg(value));
}

std::vector<std::int32_t> MountProcess::Dump(std::int32_t address) {
  std::vector<std::int32_t> words;
  for (const QString& line : Ask(QStringLiteral("dump %1").arg(address))) {
    for (const QString& word : line.split(QLatin1Char(' '), Qt::SkipEmptyParts))
      words.push_back(word.toInt(nullptr, 16));
  }
  return words;
}

QStringList MountProcess::Ask(const QString& command) {
  mProcess.write(command.toLatin1() + '\n');
  QStringList lines;
  QElapsedTimer elapsed;
  elapsed.start();
  while (elapsed.elapsed() < kPatience) {
    if (!mProcess.canReadLine() && !mProcess.waitForReadyRead(kPatience)) break;
    while (mProcess.canReadLine()) {
      const QString line = QString::fromLatin1(mProcess.readLine()).trimmed();
      if (line == QLatin1String("ok") || line == QLatin1String("end")) return lines;
      lines.append(line);
    }
  }
  return {};
}

}  // namespace tarnwick::tour
