#include "linklib/ReplyReader.h"

#include <algorithm>

namespace tarnwick::wire {

void ReplyReader::Expect(const Frame& request) {
  mRequest = request;
  mBytes.clear();
  mSawBytes = mSawOthers = mSawEcho = false;
}

bool ReplyReader::IsAnswer(const Frame& frame) const {
  if (frame.kind == Kind::Request || frame.command != mRequest.command) return false;
  if (frame.sequence != mRequest.sequence || frame.address != mRequest.address) return false;
  if (frame.kind == Kind::Refused || frame.command != Command::Read) return true;
  return frame.payload[0] == mRequest.payload[2];
}

std::optional<Frame> ReplyReader::Push(ByteView bytes) {
  mSawBytes = mSawBytes || !bytes.empty();
  mBytes.insert(mBytes.end(), bytes.begin(), bytes.end());
  Frame frame;
  std::size_t firstPartial = mBytes.size();
  for (std::size_t at = 0; at < mBytes.size();) {
    std::size_t length = 1;
    const Scan scan = ScanFrame(ByteView(mBytes).subspan(at), frame, length);
    if (scan == Scan::Whole) {
      if (IsAnswer(frame)) {
        mBytes.clear();
        return frame;
      }
      (frame == mRequest ? mSawEcho : mSawOthers) = true;
    } else {
      length = 1;
      if (scan == Scan::Partial) firstPartial = std::min(firstPartial, at);
    }
    at += length;
  }
  // Whole frames behind a partial one are met again with the next bytes; that changes nothing.
  mBytes.erase(mBytes.begin(), mBytes.begin() + static_cast<std::ptrdiff_t>(firstPartial));
  return std::nullopt;
}

}  // namespace tarnwick::wire
