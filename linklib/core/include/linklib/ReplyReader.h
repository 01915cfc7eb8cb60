// Finds the one answer that is waited for in whatever comes in.
#pragma once

#include <optional>

#include "linklib/Frame.h"

namespace tarnwick::wire {

/// Since sequence number, address and command of the answer are known beforehand, it is looked for
/// at every offset: noise before it, or the rest of a late answer, never hides it.
class ReplyReader {
 public:
  /// Starts to look for the answer to `request`. What came in before is forgotten.
  void Expect(const Frame& request);
  /// The answer, once it is there. Other frames are passed over.
  std::optional<Frame> Push(ByteView bytes);

  bool SawBytes() const { return mSawBytes; }
  /// True when valid frames came that are neither the answer nor an echo of the request.
  bool SawOthers() const { return mSawOthers; }
  bool SawEcho() const { return mSawEcho; }

 private:
  bool IsAnswer(const Frame& frame) const;

  Frame mRequest;
  Bytes mBytes;
  bool mSawBytes = false;
  bool mSawOthers = false;
  bool mSawEcho = false;
};

}  // namespace tarnwick::wire
