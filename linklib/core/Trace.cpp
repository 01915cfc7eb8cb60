#include "linklib/Trace.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <sstream>
#include <utility>

#include "linklib/CommandNames.h"

namespace tarnwick::wire {
namespace {

std::string Hex(ByteView bytes) {
  std::string text;
  std::array<char, 4> buffer{};
  for (const std::uint8_t byte : bytes) {
    std::snprintf(buffer.data(), buffer.size(), " %02X", byte);
    text += buffer.data();
  }
  return text;
}

std::string Describe(const Frame& frame) {
  std::string text = "#" + std::to_string(frame.sequence) + " ";
  for (const auto& [command, name] : kCommandNames)
    if (command == frame.command) text += name;
  text += frame.address == kMountAddress ? " mount" : " device " + std::to_string(frame.address);
  if (frame.brief) text += " short";
  if (frame.kind != Kind::Request) text += frame.kind == Kind::Done ? " done" : " refused";
  return text + (frame.payload.empty() ? "" : ":") + Hex(frame.payload);
}

class TracedPort : public serial::ILine {
 public:
  TracedPort(std::unique_ptr<serial::ILine> port, Trace& trace) : mPort(std::move(port)), mTrace(trace) {}
  ~TracedPort() override { mTrace.Note(Trace::kPort, "closed"); }
  TracedPort(const TracedPort&) = delete;
  TracedPort& operator=(const TracedPort&) = delete;

  std::error_code Speed(int speed) override {
    const std::error_code error = mPort->Speed(speed);
    const std::string ending = error ? " not taken: " + error.message() : std::string();
    mTrace.Note(Trace::kPort, "speed " + std::to_string(speed) + ending);
    return error;
  }
  std::error_code Write(std::span<const std::uint8_t> bytes, Duration limit) override {
    if (mTrace.On(Trace::kPort)) mTrace.Note(Trace::kPort, ">" + Hex(bytes));
    const std::error_code error = mPort->Write(bytes, limit);
    NoteLoss(error);
    return error;
  }
  std::size_t Read(std::span<std::uint8_t> buffer, Duration limit, std::error_code& error) override {
    const std::size_t count = mPort->Read(buffer, limit, error);
    NoteLoss(error);
    if (count > 0 && mTrace.On(Trace::kPort)) mTrace.Note(Trace::kPort, "<" + Hex(buffer.first(count)));
    return count;
  }

 private:
  void NoteLoss(const std::error_code& error) {
    if (error) mTrace.Note(Trace::kPort, "gone: " + error.message());
  }

  std::unique_ptr<serial::ILine> mPort;
  Trace& mTrace;
};

}  // namespace

void Trace::Turn(std::int32_t filter, bool on) {
  if (filter != kFrames && filter != kPort) return;
  (filter == kFrames ? mFrames : mPort) = on && !mFile.empty();
  const std::time_t now = std::time(nullptr);
  std::array<char, 40> date{};
  std::strftime(date.data(), date.size(), " on, %Y-%m-%d %H:%M:%S", std::localtime(&now));
  Note(filter, std::string("filter ") + std::to_string(filter) + date.data());
}

bool Trace::On(std::int32_t filter) const {
  return filter == kFrames ? mFrames : mPort;
}

void Trace::Sent(const Frame& frame, std::size_t sending) {
  if (!mFrames) return;
  Note(kFrames, "> " + Describe(frame) + (sending > 1 ? " (sending " + std::to_string(sending) + ")" : ""));
}

void Trace::Received(const Frame& frame) {
  if (mFrames) Note(kFrames, "< " + Describe(frame));
}

void Trace::Note(std::int32_t filter, std::string_view text) {
  if (!On(filter)) return;
  std::array<char, 32> time{};
  std::snprintf(time.data(), time.size(), "%12.3f ", static_cast<double>(mClock.Now().count()) / 1000.0);
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(mFile, error);
  if (!error && size + text.size() + time.size() > kMostBytes) Shorten();
  std::ofstream(mFile, std::ios::app | std::ios::binary)
      << time.data() << (filter == kFrames ? "frame " : "port  ") << text << '\n';
}

/// Keeps the newer half, from a whole line on.
void Trace::Shorten() {
  std::ostringstream kept;
  std::ifstream in(mFile, std::ios::binary);
  std::string line;
  in.seekg(static_cast<std::streamoff>(kMostBytes / 2));
  std::getline(in, line);
  if (in.peek() != std::ifstream::traits_type::eof()) kept << in.rdbuf();
  std::ofstream(mFile, std::ios::trunc | std::ios::binary) << kept.str();
}

std::unique_ptr<serial::ILine> Traced(std::unique_ptr<serial::ILine> port, Trace& trace) {
  return std::make_unique<TracedPort>(std::move(port), trace);
}

}  // namespace tarnwick::wire
