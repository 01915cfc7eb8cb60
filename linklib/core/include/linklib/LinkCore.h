// What the exports of the link library do, without the exports: one port, opened and closed by name,
// and the questions to the devices behind it.
//
// Every operation gives its failure result when no port is open, an argument is out of range or a
// pointer null; nothing is thrown. Out arguments are filled on success only. Each operation ends
// within the bounds of docs/link-protocol.md.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "linklib/MountLink.h"
#include "linklib/ReadAhead.h"
#include "linklib/Trace.h"
#include "linklib/WrittenImage.h"

namespace tarnwick::wire {

class LinkCore {
 public:
  /// Opener and clock must outlive the library. Traces go to the file `trace`; nowhere when it is empty.
  LinkCore(IPortOpener& opener, IClock& clock, std::filesystem::path trace = {})
      : mOpener(opener), mClock(clock), mTrace(std::move(trace), clock) {}

  /// Turns a filter of the trace on, or off with `on` 0.
  void DebugFilter(std::int32_t on, std::int32_t filter) { mTrace.Turn(filter, on != 0); }

  /// Opens the port of that name in place of the one open; an empty name only closes. 0 open, -1
  /// cannot open, -8 to -2 no telescope; the page of the protocol tells which is which.
  std::int32_t InitSerial(const std::string& name);
  /// 2 through a hand control, 1 direct, 0 when no port is open.
  std::int32_t SerialMode() const;
  /// Bits per second that the line runs at now, 0 when no port is open.
  std::int32_t Speed() const { return mLink ? mLink->Speed() : 0; }
  void LockHandControl();
  /// What is known of the line, for a person to read: lines ended by a line feed, in this order, each where
  /// there is something to tell. "cause: " and why the last opening gave -1 to -8, or why the line went
  /// afterwards; "speed: " in bits per second; "repeats: " and how often a request was sent again since the
  /// opening.
  std::string Note() const;
  /// 0: the hand control's virtual port.
  std::int32_t TestForVirtualPort() const;
  /// 0: upgrading is supported.
  std::int32_t TestForUpgradeSupport() const;

  /// 1: filled.
  std::int32_t GetModel(std::int32_t address, std::int32_t* model);
  /// 0 no response, else the state; the version is filled when it is 1.
  std::int32_t GetState(std::int32_t address, std::int32_t* major, std::int32_t* minor);
  /// 1: filled, from running firmware and from the boot loader.
  std::int32_t GetRevision(std::int32_t address, std::int32_t* revision);
  std::int32_t GetBootRevision(std::int32_t address, std::int32_t* revision);
  /// 0: filled; else -1.
  std::int32_t GetBootVersion(std::int32_t address, std::int32_t* version);
  /// 1: `words` filled, one element for each word from `first` to `last`. A failure may have filled
  /// some. A run of single words is served from few exchanges; no word is older than a second or than
  /// the last other call.
  std::int32_t ReadMemory(std::int32_t address, std::int32_t first, std::int32_t last, std::int32_t* words);
  /// 1: done.
  std::int32_t EnterBoot(std::int32_t address);
  std::int32_t StartProgramming(std::int32_t address);
  /// `count` is 4, 6 or 10: index of the first word, high byte first, then each word, low byte first.
  std::int32_t SendData(std::int32_t address, std::int32_t count, const std::int32_t* elements);
  /// Compares what the device holds with what was sent since the start before it ends.
  std::int32_t EndProgramming(std::int32_t address);

 private:
  void Close();
  std::int32_t Failed(Opening result, const std::error_code& error);
  Answer Ask(std::int32_t address, Command command, Bytes payload = {});
  std::int32_t AskNumber(std::int32_t address, Command command, std::int32_t* out);
  std::int32_t AskPlain(std::int32_t address, Command command);
  std::int32_t ReadWord(std::int32_t address, std::int32_t place, std::int32_t* word);
  bool HoldsWhatWasSent(std::int32_t address);

  IPortOpener& mOpener;
  IClock& mClock;
  Trace mTrace;
  std::optional<MountLink> mLink;
  std::string mFailure;  ///< Why the last opening failed; empty when it did not.
  ReadAhead mAhead;
  std::map<std::int32_t, WrittenImage> mWritten;  ///< By address.
};

}  // namespace tarnwick::wire
