// The link to a mount as a whole: found, at the fastest speed that the line bears, and found again when
// the mount has lost its speed or its lock; docs/link-protocol.md.
#pragma once

#include "linklib/Session.h"

namespace tarnwick::wire {

/// Results of opening a port.
enum class Opening : std::int32_t {
  Opened = 0,
  CannotOpen = -1,
  Silence = -2,
  Noise = -3,
  Echo = -4,
  WrongAnswers = -5,
  OtherProtocol = -6,
  LineFailed = -7,
  PoorLine = -8,
};

/// What was found, in words for a person; empty for `Opened`.
std::string_view CauseText(Opening result);

/// The longest that opening may take.
inline constexpr Duration kOpenLimit = std::chrono::seconds(4);
/// The longest that one question may take, with finding the mount again and locking it again.
inline constexpr Duration kAskLimit = std::chrono::milliseconds(4500);
/// The longest beyond what the mount says that it takes, where that is more.
inline constexpr Duration kSlowMargin = std::chrono::milliseconds(1500);

class MountLink {
 public:
  explicit MountLink(Session session) : mSession(std::move(session)) {}

  /// Looks for the mount and agrees on the speed, within `kOpenLimit`.
  Opening Open();
  /// Sends the mount home, so that the next opening finds it at once. A line that is gone is left alone.
  void Close();
  LinkKind Kind() const { return mKind; }
  bool UpgradeSupported() const { return mUpgradeSupported; }
  /// Locks the hand control, and from now on again whenever it has lost its lock.
  void Lock();
  /// Bits per second at present.
  int Speed() const { return mSession.Speed(); }
  /// Why the line went; none while it stands.
  std::error_code Cause() const { return mSession.Cause(); }
  /// How often a request was sent again since the opening.
  std::int32_t Repeats() const { return mSession.Repeats(); }

  /// One question to a device, put at `asked`: over `kAskLimit` later or, where the mount says that it takes
  /// long, `kSlowMargin` after that time.
  Answer Ask(std::uint8_t address, Command command, Bytes payload, Duration asked);
  /// The same without looking for a mount that does not answer, and with few repetitions.
  Answer Try(std::uint8_t address, Command command, Bytes payload, Duration asked);

 private:
  Answer FindMount(Duration end);
  Opening TakeIdentity(const Bytes& identity);
  /// Takes the mount's answer to how long it may take; one that did not come is asked for again by `Ask`.
  void LearnTimes(const Answer& answer);
  static bool TakesLong(Command command);
  Duration TimeOf(Command command) const;
  Opening AgreeOnSpeed(int fastest, Duration trial, Duration end);
  bool ChangeTo(int speed, Duration end);
  int Probe(Duration end);
  Answer First(const Frame& request, Duration end);
  Answer AskRepeatedly(const Frame& request, Duration end);
  bool FindAgain(Duration end);
  Frame SpeedRequest(int speed);

  Session mSession;
  LinkKind mKind = LinkKind::Direct;
  bool mUpgradeSupported = false;
  bool mLockWanted = false;
  int mHome = kBaseSpeed;  ///< Speed to which the mount goes back.
  int mFastest = kBaseSpeed;
  bool mTellsTimes = false;  ///< And has not done so yet.
  std::array<Duration, 3> mTimes{};  ///< How long Start, End and Check may take.
};

}  // namespace tarnwick::wire
