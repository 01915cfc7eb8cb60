#include "linklib/ReplyReader.h"

#include <algorithm>

namespace tarnwick::wire {

void ReplyReader::Expect(const Frame& request, bool briefly) {
  mRequest = request;
  mKnown.clear();
  if (briefly) mKnown.push_back(KnownOf(request));
  mBytes.clear();
  mSawBytes = mSawOthers = mSawEcho = false;
}

bool ReplyReader::IsAnswer(const Frame& frame) const {
  if (frame.kind == Kind::Request || frame.command != mRequest.command) return false;
  if (frame.sequence != mRequest.sequence || frame.address != mRequest.address) return false;
  if (frame.kind == Kind::Refused) return true;
  // An answer that tells what was asked for is held against it.
  if (frame.command == Command::Speed) return frame.payload == mRequest.payload;
  return frame.command != Command::Read || frame.payload[0] == mRequest.payload[2];
}

/// `bytes` are a part of a frame: true unless their beginning says already that it is another one.
bool ReplyReader::MayBeAnswer(ByteView bytes) const {
  Frame answer = mRequest;
  for (const Kind kind : {Kind::Done, Kind::Refused}) {
    answer.kind = kind;
    answer.payload.clear();
    const Bytes head = Encode(answer);
    const std::size_t same = std::min(bytes.size(), kHeaderLength);
    if (std::ranges::equal(bytes.first(same), ByteView(head).first(same))) return true;
    if (mKnown.empty()) continue;
    answer.brief = mKnown.front().first;
    if (bytes[0] == Encode(answer)[0]) return true;
    answer.brief.reset();
  }
  return false;
}

bool ReplyReader::MayGoOn() const {
  Frame frame;
  std::size_t length = 0;
  for (std::size_t at = 0; at < mBytes.size(); ++at) {
    const ByteView rest = ByteView(mBytes).subspan(at);
    if (MayBeAnswer(rest) && ScanFrame(rest, frame, length, mKnown) == Scan::Partial) return true;
  }
  return false;
}

std::optional<Frame> ReplyReader::Push(ByteView bytes) {
  mSawBytes = mSawBytes || !bytes.empty();
  mBytes.insert(mBytes.end(), bytes.begin(), bytes.end());
  Frame frame;
  std::size_t firstPartial = mBytes.size();
  for (std::size_t at = 0; at < mBytes.size();) {
    std::size_t length = 1;
    const Scan scan = ScanFrame(ByteView(mBytes).subspan(at), frame, length, mKnown);
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
