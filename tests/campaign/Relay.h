// A relay between the library and another mount on a terminal: it plays the faults of a line that
// tarnwick-mount would play by itself.
#pragma once

#include <algorithm>
#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "linklib/Surroundings.h"
#include "mount/Line.h"

namespace tarnwick::campaign {

/// Opens `terminal`'s ports behind the faults that `line` has been set to. All must outlive it.
class Relay : public wire::IPortOpener {
 public:
  Relay(wire::IPortOpener& terminal, mount::Line& line) : mTerminal(terminal), mLine(line) {}

  bool hungUp = false;  ///< Each use of the line fails.
  bool off = false;     ///< The mount has no power: what was under way to it is lost.

  std::unique_ptr<serial::ILine> Open(const std::string& name, std::error_code& error) override {
    return Behind(mTerminal.Open(name, error), error);
  }
  std::unique_ptr<serial::ILine> OpenAgain(std::error_code& error) override {
    return Behind(mTerminal.OpenAgain(error), error);
  }

 private:
  using Clock = std::chrono::steady_clock;
  struct Piece {
    Clock::time_point arrives;
    wire::Bytes bytes;
  };

  struct Line : serial::ILine {
    Line(std::unique_ptr<serial::ILine> line, Relay& relay) : mTerminal(std::move(line)), mRelay(relay) {}

    std::error_code Speed(int speed) override {
      return mRelay.hungUp ? mRelay.Lost() : mTerminal->Speed(speed);
    }

    std::error_code Write(std::span<const std::uint8_t> sent, serial::Duration limit) override {
      wire::Bytes bytes(sent.begin(), sent.end());
      mRelay.mLine.toMount(bytes);
      if (mRelay.hungUp) return mRelay.Lost();
      return mRelay.off || bytes.empty() ? std::error_code() : mTerminal->Write(bytes, limit);
    }

    std::size_t Read(std::span<std::uint8_t> buffer, serial::Duration limit,
                     std::error_code& error) override {
      const Clock::time_point end = Clock::now() + limit;
      for (;;) {
        const Clock::time_point now = Clock::now();
        if (mRelay.hungUp) return error = mRelay.Lost(), 0;
        if (!mComing.empty() && mComing.front().arrives <= now) return Arrive(buffer);
        if (now >= end) return 0;
        Stray(now);
        Clock::time_point until = mComing.empty() ? end : std::min(end, mComing.front().arrives);
        if (mStray != Clock::time_point{}) until = std::min(until, mStray);
        const auto wait = std::chrono::duration_cast<serial::Duration>(until - now);
        std::array<std::uint8_t, 256> read{};
        const std::size_t count = mTerminal->Read(read, std::max(wait, serial::Duration(100)), error);
        if (error) return 0;
        if (count > 0) Take({read.begin(), read.begin() + static_cast<std::ptrdiff_t>(count)});
      }
    }

   private:
    std::size_t Arrive(std::span<std::uint8_t> buffer) {
      const wire::Bytes bytes = std::move(mComing.front().bytes);
      mComing.pop_front();
      std::ranges::copy(bytes, buffer.begin());
      return bytes.size();
    }
    /// What the mount sent, cut into the pieces in which it arrives.
    void Take(wire::Bytes bytes) {
      mRelay.mLine.toLibrary(bytes);
      const mount::LineSetup& setup = mRelay.mLine.setup;
      const std::size_t most = setup.piece == 0 ? 128 : setup.piece;
      Clock::time_point arrives = Clock::now() + setup.latency + mRelay.mLine.delay;
      for (std::size_t at = 0; at < bytes.size(); at += most, arrives += std::chrono::milliseconds(1)) {
        const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(at);
        const auto count = static_cast<std::ptrdiff_t>(std::min(most, bytes.size() - at));
        mComing.push_back({arrives, {first, first + count}});
      }
    }
    /// A byte that comes up by itself, each way.
    void Stray(Clock::time_point now) {
      const mount::Strays& strays = mRelay.mLine.strays;
      if (strays.most == mount::Line::Time{}) return;
      const auto span = static_cast<std::uint32_t>((strays.most - strays.least).count() + 1);
      const auto next = strays.least + mount::Line::Time(mRelay.mLine.chance(span));
      if (mStray == Clock::time_point{}) mStray = now + next;
      if (mStray > now) return;
      mStray = now + next;
      const std::array<std::uint8_t, 1> byte = {static_cast<std::uint8_t>(mRelay.mLine.chance(256))};
      mTerminal->Write(byte, std::chrono::milliseconds(10));
      mComing.push_front({now, {static_cast<std::uint8_t>(mRelay.mLine.chance(256))}});
    }

    std::unique_ptr<serial::ILine> mTerminal;
    Relay& mRelay;
    std::deque<Piece> mComing;
    Clock::time_point mStray{};
  };

  std::error_code Lost() const { return std::make_error_code(std::errc::io_error); }
  std::unique_ptr<serial::ILine> Behind(std::unique_ptr<serial::ILine> line, std::error_code& error) {
    if (hungUp) error = Lost();
    return line && !hungUp ? std::make_unique<Line>(std::move(line), *this) : nullptr;
  }

  wire::IPortOpener& mTerminal;
  mount::Line& mLine;
};

}  // namespace tarnwick::campaign
