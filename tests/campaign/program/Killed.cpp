#include "Killed.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <optional>
#include <stdexcept>

#include "Owner.h"

namespace tarnwick::campaign {
namespace {

enum class What : std::int32_t {
  Open,
  OpenAgain,
  Speed,
  Write,
  Read,
  Check,
  Power,
  Untouched,
  Begins,
  Strike,
  Written,
  Done
};

/// A question to the world, and its answer.
struct Message {
  What what = What::Done;
  std::int64_t number = 0;  ///< The argument, or the result.
  std::int64_t limit = 0;   ///< How long to wait; of what was written, to which motor.
  std::int64_t now = 0;     ///< The world's clock.
  std::int32_t error = 0;
  std::uint32_t size = 0;
  std::array<char, 2048> bytes{};

  std::string Text() const { return {bytes.data(), size}; }
  void Text(std::string_view text) {
    size = static_cast<std::uint32_t>(std::min(text.size(), bytes.size()));
    std::copy_n(text.begin(), size, bytes.begin());
  }
};

bool Send(int socket, const Message& message) {
  const std::size_t size = offsetof(Message, bytes) + message.size;
  return ::send(socket, &message, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
}

bool Receive(int socket, Message& message) {
  return ::recv(socket, &message, sizeof message, 0) > 0;
}

/// The world as the player has it.
class FarWorld final : public IWorld {
 public:
  explicit FarWorld(int socket) : mSocket(socket) {}

  Message Ask(Message message) {
    if (!Send(mSocket, message) || !Receive(mSocket, message)) ::_exit(1);
    mNow = wire::Duration(message.now);
    return message;
  }
  bool Ask(What what, std::int64_t number = 0, const std::string& text = {}) {
    Message message{.what = what, .number = number};
    message.Text(text);
    return Ask(message).number != 0;
  }

  wire::Duration Now() override { return mNow; }
  std::unique_ptr<serial::ILine> Open(const std::string& name, std::error_code& error) override {
    return Opened(What::Open, name, error);
  }
  std::unique_ptr<serial::ILine> OpenAgain(std::error_code& error) override {
    return Opened(What::OpenAgain, {}, error);
  }
  bool CheckPowerAndCable() override { return Ask(What::Check); }
  void Power() override { Ask(What::Power); }
  bool Untouched() override { return Ask(What::Untouched); }
  void Begins() override { Ask(What::Begins); }
  bool Strike(const std::string& call, bool programming) override {
    return Ask(What::Strike, programming ? 1 : 0, call);
  }

 private:
  struct Line final : serial::ILine {
    explicit Line(FarWorld& in) : world(in) {}
    std::error_code Speed(int speed) override {
      return Error(world.Ask({.what = What::Speed, .number = speed}));
    }
    std::error_code Write(std::span<const std::uint8_t> bytes, wire::Duration limit) override {
      Message message{.what = What::Write, .limit = limit.count()};
      message.Text({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
      return Error(world.Ask(message));
    }
    std::size_t Read(std::span<std::uint8_t> buffer, wire::Duration limit, std::error_code& error) override {
      const auto most = static_cast<std::int64_t>(std::min<std::size_t>(buffer.size(), 2048));
      const Message got = world.Ask({.what = What::Read, .number = most, .limit = limit.count()});
      std::copy_n(got.bytes.begin(), got.size, buffer.begin());
      error = Error(got);
      return got.size;
    }
    FarWorld& world;
  };

  static std::error_code Error(const Message& message) { return {message.error, std::generic_category()}; }
  std::unique_ptr<serial::ILine> Opened(What what, const std::string& name, std::error_code& error) {
    Message message{.what = what};
    message.Text(name);
    message = Ask(message);
    error = Error(message);
    return error ? nullptr : std::make_unique<Line>(*this);
  }

  const int mSocket;
  wire::Duration mNow{};
};

/// One player process, and the world that it asks.
class Player {
 public:
  Player(const Case& played, World& world, const std::vector<std::string>& arguments, bool kills)
      : mCase(played), mWorld(world), mKills(kills) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
      throw std::runtime_error("no socket");
    mSocket = ends[0];
    mProcess = ::fork();
    if (mProcess == 0) {
      const int kept = ::dup(ends[1]);
      std::vector<std::string> words = arguments;
      words.insert(words.end(), {"--player", std::to_string(kept)});
      std::vector<char*> pointers;
      for (std::string& word : words) pointers.push_back(word.data());
      pointers.push_back(nullptr);
      ::execv("/proc/self/exe", pointers.data());
      ::_exit(127);
    }
    ::close(ends[1]);
  }
  ~Player() { ::close(mSocket); }
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  /// Answers until the process ends. True when it was killed.
  bool Serve(Report& report) {
    Message message;
    while (!mKilled && Receive(mSocket, message)) {
      Answer(message, report);
      message.now = mWorld.Now().count();
      if (!mKilled) Send(mSocket, message);
      if (mSoon && !mKilled) ::usleep(mCase.byte * 50), Kill();
    }
    int status = 0;
    ::waitpid(mProcess, &status, 0);
    const bool done = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (!mKilled && !done) report.wrong = "the program crashed";
    return mKilled;
  }

 private:
  void Kill() {
    // A command takes SIGTERM for a wish.
    ::kill(mProcess, mCase.count % 2 == 0 || mCase.face != Face::Window ? SIGKILL : SIGTERM);
    mKilled = true;
    mWorld.NoteStruck();
  }

  void Answer(Message& message, Report& report) {
    const std::string text = message.Text();
    message.size = 0;
    message.error = 0;
    switch (message.what) {
      case What::Open:
      case What::OpenAgain:
        return Open(message, text);
      case What::Speed:
        message.error = mLine->Speed(static_cast<int>(message.number)).value();
        break;
      case What::Write:
        return Write(message, text);
      case What::Read:
        return Read(message);
      case What::Check:
        message.number = mWorld.CheckPowerAndCable();
        break;
      case What::Power:
        mWorld.Power();
        break;
      case What::Untouched:
        message.number = mWorld.Untouched();
        break;
      case What::Begins:
        ++report.runs;
        mWorld.Begins();
        break;
      case What::Strike:
        StrikeAt(message.number != 0);
        message.number = 0;
        break;
      case What::Written:
        report.written[static_cast<std::int32_t>(message.limit)] = static_cast<Variant>(message.number);
        break;
      case What::Done:
        report.notes += static_cast<int>(message.number);
        report.gaveUp = text.substr(0, text.find('|'));
        report.wrong = text.substr(text.find('|') + 1);
        break;
    }
  }

  /// One third dies before a call, one third in the midst of its bytes, and one a moment later.
  void StrikeAt(bool programming) {
    if (!mKills || !programming || ++mCalls != mCase.count) return;
    if (mCase.byte % 3 == 0) Kill();
    mMidst = mCase.byte % 3 == 1;
    mSoon = mCase.byte % 3 == 2;
  }

  void Open(Message& message, const std::string& name) {
    std::error_code error;
    auto line = message.what == What::Open ? mWorld.Open(name, error) : mWorld.OpenAgain(error);
    message.error = error.value();
    if (line) mLine = std::move(line);
  }
  void Write(Message& message, std::string text) {
    if (mMidst) text.resize(std::min<std::size_t>(text.size(), mCase.byte / 3));
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const std::error_code error = mLine->Write(std::span(bytes, text.size()), wire::Duration(message.limit));
    message.error = error.value();
    if (mMidst) Kill();
  }
  void Read(Message& message) {
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(message.number));
    std::error_code error;
    const std::size_t count = mLine->Read(buffer, wire::Duration(message.limit), error);
    message.Text({reinterpret_cast<const char*>(buffer.data()), count});
    message.error = error.value();
  }

  const Case mCase;
  World& mWorld;
  const bool mKills;
  int mSocket = -1;
  pid_t mProcess = -1;
  std::unique_ptr<serial::ILine> mLine;  ///< The one that was opened last: the library uses no other.
  Number mCalls = 0;
  bool mMidst = false, mSoon = false, mKilled = false;
};

}  // namespace

Report PlayKilled(const Case& played, World& world, const std::vector<std::string>& arguments) {
  Report report;
  if (!Player(played, world, arguments, true).Serve(report)) return report;
  const bool waits = world.MotorWaits();
  Player(played, world, arguments, false).Serve(report);
  if (waits && report.notes == 0) report.wrong = "killed, and no note of it at the next start";
  return report;
}

int PlayAsPlayer(const Case& played, int socket, const std::filesystem::path& folder) {
  FarWorld world(socket);
  const Report report = PlayFace(played, world, folder);
  for (const auto& [address, variant] : report.written)
    world.Ask({.what = What::Written, .number = variant, .limit = address});
  world.Ask(What::Done, report.notes, report.gaveUp + "|" + report.wrong);
  return 0;
}

}  // namespace tarnwick::campaign
