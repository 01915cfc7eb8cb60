// Finds the one answer that is waited for in whatever comes in.
#pragma once

#include <optional>

#include "linklib/Frame.h"

namespace tarnwick::wire {

/// Since sequence number, address and command of the answer are known beforehand, it is looked for
/// at every offset: noise before it, or the rest of a late answer, never hides it.
class ReplyReader {
 public:
  /// Starts to look for the answer to `request`, in the short form as well if `briefly`, which only a Write
  /// has. What came in before is forgotten.
  void Expect(const Frame& request, bool briefly = false);
  /// The answer, once it is there. Other frames are passed over.
  std::optional<Frame> Push(ByteView bytes);

  /// True when what came in last may be the beginning of the answer.
  bool MayGoOn() const;

  bool SawBytes() const { return mSawBytes; }
  /// True when valid frames came that are neither the answer nor an echo of the request.
  bool SawOthers() const { return mSawOthers; }
  bool SawEcho() const { return mSawEcho; }

 private:
  bool IsAnswer(const Frame& frame) const;
  bool MayBeAnswer(ByteView bytes) const;

  Frame mRequest;
  std::vector<Known> mKnown;  ///< The request's block, where a short answer is looked for.
  Bytes mBytes;
  bool mSawBytes = false;
  bool mSawOthers = false;
  bool mSawEcho = false;
};

}  // namespace tarnwick::wire
