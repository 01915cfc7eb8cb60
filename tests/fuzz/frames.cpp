// Any bytes, in any pieces, for both readers of the link protocol: they stay within their bounds, an
// answer is one to this request, and repeated it is found behind whatever came before it.
#include <algorithm>
#include <cstdlib>

#include "linklib/ReplyReader.h"

using namespace tarnwick::wire;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kHead = 5;
  constexpr std::size_t kMostPieces = 16;  // each is held against all that came before it
  constexpr int kSendings = 3;  // noise that happens to be a frame may reach into the first answer
  if (size < kHead || !PayloadLength(data[0], {})) return 0;
  const auto command = static_cast<Command>(data[0] & 0x3F);
  const auto head = static_cast<std::uint8_t>(0x80U | static_cast<unsigned>(command));
  Frame request{Kind::Request, command, data[1], data[2], Bytes(*PayloadLength(head, {}), data[3])};
  if (command == Command::Read) request.payload[2] = static_cast<std::uint8_t>(1 + data[3] % kMostWords);
  Frame answer = request;
  answer.kind = Kind::Done;
  answer.payload.assign(AnswerLength(request) - kHeaderLength - kCrcLength,
                        request.payload.empty() ? data[3] : request.payload.back());
  // A block may be answered in the short form, and asked for as the one that both ends expect.
  const bool brief = IsWrite(command) && data[4] % 2 == 1;
  if (brief) answer.brief = Get16(request.payload, 0);
  const Known expected = brief ? KnownOf(request) : Known{};

  ReplyReader replies;
  RequestReader requests;
  std::optional<Frame> found;
  replies.Expect(request, brief);
  if (brief) requests.Know({expected});
  const std::size_t piece = std::max<std::size_t>(1 + data[4] % 40, size / kMostPieces);
  for (std::size_t at = kHead; at < size; at += piece) {
    const ByteView bytes(data + at, std::min(piece, size - at));
    requests.Push(bytes);
    while (const auto next = requests.Next()) {
      if (next->kind != Kind::Request) std::abort();
      if (next->brief && !(KnownOf(*next) == expected)) std::abort();
    }
    if (!found) found = replies.Push(bytes);
  }
  for (int sending = 0; sending < kSendings && !found; ++sending) found = replies.Push(Encode(answer));
  if (!found || found->kind == Kind::Request || found->command != command) std::abort();
  if (found->sequence != data[1] || found->address != data[2]) std::abort();
  std::size_t held = 0;
  for (; requests.Waiting(); ++held) requests.GiveUp();
  if (held >= kLongestFrame) std::abort();
  return 0;
}
