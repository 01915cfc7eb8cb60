// Any bytes, in any pieces, for both readers of the link protocol: neither runs out of its bounds, an
// answer is one to this request, and repeated it is found behind whatever came before it.
#include <cstdlib>

#include "tarnwick/ReplyReader.h"

using namespace tarnwick::wire;

namespace {

void Require(bool kept) {
  if (!kept) std::abort();
}

void ScanAndEncode(ByteView bytes) {
  Frame frame;
  std::size_t length = 0;
  if (ScanFrame(bytes, frame, length) != Scan::Whole) return;
  const Bytes encoded = Encode(frame);
  Require(length <= kLongestFrame && std::equal(encoded.begin(), encoded.end(), bytes.begin()));
}

void ReadRequests(ByteView bytes, std::size_t piece) {
  RequestReader reader;
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    reader.Push(bytes.subspan(at, std::min(piece, bytes.size() - at)));
    while (const auto request = reader.Next()) Require(request->kind == Kind::Request);
  }
  std::size_t held = 0;
  for (; reader.Waiting(); ++held) reader.GiveUp();
  Require(held < kLongestFrame);
}

/// `head` begins a request and its answer; `noise` comes before the answer.
void FindReply(ByteView head, ByteView noise, std::size_t piece) {
  const auto command = static_cast<Command>(head[0] & 0x3F);
  const auto code = static_cast<unsigned>(command);
  const auto length =
      PayloadLength(static_cast<std::uint8_t>(static_cast<unsigned>(Kind::Request) | code), {});
  if (!length) return;
  Frame request{Kind::Request, command, head[1], head[2], Bytes(*length, head[3])};
  if (command == Command::Read) request.payload[2] = static_cast<std::uint8_t>(1 + head[3] % kMostWords);
  Frame answer = request;
  answer.kind = Kind::Done;
  answer.payload.assign(AnswerLength(request) - kHeaderLength - kCrcLength, head[3]);
  if (command == Command::Read) answer.payload[0] = request.payload[2];
  const auto fits = [&](const Frame& found) {
    return found.kind != Kind::Request && found.command == command && found.sequence == head[1] &&
           found.address == head[2];
  };
  ReplyReader reader;
  reader.Expect(request);
  for (std::size_t at = 0; at < noise.size(); at += piece)
    if (const auto found = reader.Push(noise.subspan(at, std::min(piece, noise.size() - at))))
      return Require(fits(*found));
  // Noise that happens to be a frame may reach into the first answer, but not into all repetitions.
  constexpr int kSendings = 3;
  std::optional<Frame> found;
  for (int sending = 0; sending < kSendings && !found; ++sending) found = reader.Push(Encode(answer));
  Require(found && fits(*found));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kHead = 5;
  if (size < kHead) return 0;
  const ByteView bytes(data, size);
  const std::size_t piece = 1 + data[4] % 40;
  ScanAndEncode(bytes.subspan(kHead));
  ReadRequests(bytes.subspan(kHead), piece);
  FindReply(bytes.first(kHead), bytes.subspan(kHead), piece);
  return 0;
}
