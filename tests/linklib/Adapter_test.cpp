// Serial adapters as the system tells of them, by folders in the place of its own and pseudo terminals in the
// place of the adapters; and drivers that take other settings than they are told.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>

#include "linklib/Surroundings.h"
#include "platform/terminal.h"
#include "support/TempFolder.h"

namespace {

/// What the driver makes of a speed that it is told: itself, or another one.
speed_t (*gDriver)(speed_t told) = nullptr;

/// The flags of the driver, where it has any; and whether it lets them be changed.
std::optional<unsigned> gFlags;
bool gFlagsFixed = false;

}  // namespace

extern "C" int tcsetattr(int fd, int when, const termios* settings) noexcept {
  using Call = int (*)(int, int, const termios*);
  static const auto next = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "tcsetattr"));
  termios taken = *settings;
  if (gDriver != nullptr) cfsetspeed(&taken, gDriver(cfgetospeed(settings)));
  return next(fd, when, &taken);
}

extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
  using Call = int (*)(int, unsigned long, ...);
  static const auto next = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "ioctl"));
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request != TIOCGSERIAL && request != TIOCSSERIAL) return next(fd, request, argument);
  if (!gFlags || (request == TIOCSSERIAL && gFlagsFixed)) return errno = gFlags ? EPERM : ENOTTY, -1;
  auto* const driver = static_cast<serial_struct*>(argument);
  if (request == TIOCSSERIAL) gFlags = driver->flags;
  if (request == TIOCGSERIAL) *driver = {}, driver->flags = static_cast<int>(*gFlags);
  return 0;
}

namespace tarnwick::wire {
namespace {

namespace fs = std::filesystem;

/// The system's folders with USB adapters, each a pseudo terminal.
struct Desk {
  /// Plugs one in under a name of its own: its terminal's number.
  std::string Plug(PseudoTerminal& terminal, const std::string& place, const std::string& serial,
                   const std::string& product = "6015") {
    std::string what;
    EXPECT_FALSE(terminal.Open({}, what)) << what;
    const std::string name = fs::path(terminal.Path()).filename();
    const fs::path usb = folder / ("usb/" + place);
    const fs::path port = usb / (place + ":1.0") / name;
    fs::create_directories(port);
    test::WriteFile(usb / "idVendor", "0403\n");
    test::WriteFile(usb / "idProduct", product + "\n");
    test::WriteFile(usb / "product", "USB Serial\n");
    if (!serial.empty()) test::WriteFile(usb / "serial", serial + "\n");
    test::WriteFile(port / "latency_timer", "16");
    fs::create_directories(system.terminals / name);
    fs::create_symlink(port, system.terminals / name / "device");
    fs::create_directories(folder / "ports");
    fs::remove(folder / "ports/COM5");
    fs::create_symlink(terminal.Path(), folder / "ports/COM5");
    return name;
  }
  void Unplug(const std::string& name, const std::string& place) {
    fs::remove_all(system.terminals / name);
    fs::remove_all(folder / ("usb/" + place));
  }

  const test::TempFolder folder;
  const serial::System system{folder / "class", "/dev/pts"};
  PortOpener opener{folder.Path(), system};
  std::error_code error;
};

TEST(Adapter, IsFoundAgainUnderAnotherNameAndNoOtherIsTakenForIt) {
  struct Case {
    std::string what;
    std::string serial, again, place, product;
    bool same, twin = false;
  };
  const std::vector<Case> cases = {
      {"by its number, elsewhere", "A9", "A9", "1-2", "6015", true},
      {"another number in its place", "A9", "B7", "1-1", "6015", false},
      {"without a number, in its place", "", "", "1-1", "6015", true},
      {"without a number, elsewhere", "", "", "1-2", "6015", false},
      {"another product with its number", "A9", "A9", "1-1", "2303", false},
      {"its place, where a twin has its number", "1", "1", "1-1", "6015", true, true},
      {"its number, which a twin has as well", "1", "1", "1-2", "6015", false, true}};
  for (const Case& c : cases) {
    Desk desk;
    PseudoTerminal before, after, twin;
    if (c.twin) desk.Plug(twin, "1-3", c.serial);
    const std::string name = desk.Plug(before, "1-1", c.serial);
    EXPECT_FALSE(desk.opener.Open("COM99", desk.error));
    EXPECT_EQ(desk.error, std::errc::no_such_device);
    auto line = desk.opener.Open("COM5", desk.error);
    ASSERT_TRUE(line) << c.what;
    desk.Unplug(name, "1-1");
    line.reset();
    EXPECT_FALSE(desk.opener.OpenAgain(desk.error)) << c.what;
    const std::string other = desk.Plug(after, c.place, c.again, c.product);
    ASSERT_NE(other, name);
    line = desk.opener.OpenAgain(desk.error);
    EXPECT_EQ(line != nullptr, c.same) << c.what;
    if (!line) continue;
    const std::array<std::uint8_t, 2> sent = {'h', 'i'};
    EXPECT_FALSE(line->Write(sent, std::chrono::seconds(1)));
    EXPECT_EQ(after.Read(), std::vector<std::uint8_t>(sent.begin(), sent.end())) << c.what;
  }
}

TEST(Adapter, HandsOnAtOnceWithoutFlowControlWhileItIsOpenAndIsThenAsBefore) {
  constexpr tcflag_t kFlow = IXON | IXOFF | IXANY;
  constexpr unsigned kAsked = ASYNC_LOW_LATENCY, kOther = ASYNC_SPD_VHI;
  const struct {
    const char* what;
    std::optional<unsigned> flags, open;  ///< Before and after; and while it is open.
    bool fixed;
    std::string timer, timerOpen;  ///< Empty where there is none.
  } kCases[] = {{"by the driver's flag", kOther, kOther | kAsked, false, "16", "16"},
                {"asked for already", kAsked, kAsked, false, "16", "16"},
                {"a flag that may not be changed", kOther, kOther, true, "16", "1"},
                {"by its timer", {}, {}, false, "16", "1"},
                {"not at all", {}, {}, false, "", ""}};
  for (const auto& c : kCases) {
    Desk desk;
    PseudoTerminal terminal;
    const std::string name = desk.Plug(terminal, "1-1", "A9");
    const int fd = ::open(terminal.Path().c_str(), O_RDWR | O_NOCTTY);
    termios settings{};
    ::tcgetattr(fd, &settings);
    settings.c_iflag |= kFlow;
    ::tcsetattr(fd, TCSANOW, &settings);
    const auto flow = [&] { return ::tcgetattr(fd, &settings), settings.c_iflag & kFlow; };
    const fs::path timer = desk.system.terminals / name / "device/latency_timer";
    c.timer.empty() ? (void)fs::remove(timer) : test::WriteFile(timer, c.timer);
    gFlags = c.flags;
    gFlagsFixed = c.fixed;
    auto line = desk.opener.Open("COM5", desk.error);
    ASSERT_TRUE(line) << c.what << ": no adapter fails for want of it.";
    EXPECT_EQ(gFlags, c.open) << c.what;
    EXPECT_EQ(flow(), 0U);
    EXPECT_EQ(test::ReadFile(timer), c.timerOpen) << c.what;
    line.reset();
    EXPECT_EQ(gFlags, c.flags) << c.what << ": not put back.";
    EXPECT_EQ(flow(), kFlow);
    ::close(fd);
    EXPECT_EQ(test::ReadFile(timer), c.timer) << c.what << ": not put back.";
    gFlags.reset();
  }
}

TEST(Adapter, StaysAtItsSpeedWhereItsDriverTakesAnother) {
  Desk desk;
  PseudoTerminal terminal;
  desk.Plug(terminal, "1-1", "A9");
  auto line = desk.opener.Open("COM5", desk.error);
  ASSERT_TRUE(line);
  for (const auto driver : {+[](speed_t told) { return told == B115200 ? speed_t{B38400} : told; },
                            +[](speed_t told) { return told == B115200 ? speed_t{B19200} : told; }}) {
    gDriver = driver;
    EXPECT_EQ(line->Speed(115200), std::errc::not_supported);
    EXPECT_EQ(terminal.Speed(), 19200);
    EXPECT_FALSE(line->Speed(921600));
    EXPECT_EQ(terminal.Speed(), 921600);
    EXPECT_FALSE(line->Speed(19200));
  }
  gDriver = nullptr;
}

}  // namespace
}  // namespace tarnwick::wire
