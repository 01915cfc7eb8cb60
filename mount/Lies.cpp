#include "mount/Lies.h"

namespace tarnwick::mount {
namespace {

using wire::Command;
using wire::Frame;

}  // namespace

std::optional<Frame> Lies::Handle(const Frame& request) {
  if (std::optional<Frame> refusal = Refuse(request)) return refusal;
  std::optional<Frame> answer = wire::IsWrite(request.command) ? Write(request) : mMount.Handle(request);
  KeepStuck();
  if (!answer) return answer;
  const bool lie = mBefore && mDice.Hit(old);
  if (lie) mSay("an old answer");
  std::swap(answer, mBefore);
  if (!lie) answer = mBefore;
  return answer;
}

std::optional<Frame> Lies::Refuse(const Frame& request) {
  const auto refusal = refusals.find(request.command);
  if (refusal == refusals.end() || refusal->second.times == 0) return std::nullopt;
  --refusal->second.times;
  mSay("refused a command");
  Frame answer = request;
  answer.kind = wire::Kind::Refused;
  answer.payload = {static_cast<std::uint8_t>(refusal->second.reason)};
  return answer;
}

std::optional<Frame> Lies::Write(const Frame& request) {
  const auto device = mMount.Devices().find(request.address);
  const bool stores = device != mMount.Devices().end() && device->second.State() == RunState::Program;
  if (stores && tear) return Tear(request, device->second);
  if (!stores || !mDice.Hit(unstored)) return mMount.Handle(request);
  mSay("acknowledged a block without storing it");
  Frame answer = request;
  answer.kind = wire::Kind::Done;
  answer.payload.clear();
  return answer;
}

/// The words before the torn one are stored, those behind it are not, and of its bits each is the new
/// or the old one.
std::optional<Frame> Lies::Tear(const Frame& request, Device& device) {
  tear = false;
  Memory& memory = device.Words();
  const std::uint32_t first = wire::Get16(request.payload, 0);
  const auto count = static_cast<std::uint32_t>(request.payload.size() / 2 - 1);
  std::vector<std::uint16_t> before;
  for (std::uint32_t i = first; i < first + count && memory.HasImageWord(i); ++i)
    before.push_back(memory.ImageWord(i));
  mMount.Handle(request);
  if (before.size() < count) return std::nullopt;
  const std::uint32_t torn = mDice.Below(count);
  for (std::uint32_t i = torn; i < count; ++i) {
    const std::uint32_t taken = i == torn ? mDice.Below(0x10000) : 0;
    const std::uint32_t word = (memory.ImageWord(first + i) & taken) | (before[i] & ~taken);
    memory.ImageWord(first + i, static_cast<std::uint16_t>(word));
  }
  mSay("tore word " + std::to_string(first + torn));
  return std::nullopt;
}

void Lies::KeepStuck() {
  for (const Stuck& bit : stuck) {
    const auto device = mMount.Devices().find(bit.address);
    if (device == mMount.Devices().end() || !device->second.Words().HasImageWord(bit.word)) continue;
    Memory& memory = device->second.Words();
    const unsigned word = memory.ImageWord(bit.word);
    const unsigned kept = bit.high ? word | bit.mask : word & ~unsigned{bit.mask};
    memory.ImageWord(bit.word, static_cast<std::uint16_t>(kept));
  }
}

}  // namespace tarnwick::mount
