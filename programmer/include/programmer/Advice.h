// What the owner of a mount does next: after a message, and after a run. Each sentence stands here and
// nowhere else in the program; the help and the user guide repeat it word for word, and the owner in the
// campaign of the whole program does what it says and nothing else.
#pragma once

#include <span>
#include <string_view>

namespace tarnwick::advice {

inline constexpr std::string_view kCyclePower =
    "Switch the mount off and on, wait a few seconds and press Refresh Status.";
inline constexpr std::string_view kBeginAgain =
    "Not lost. Check power and cable, stay on this page, choose the motor and press Begin Programming again. "
    "Do not go back: that would forget which hardware revision it is.";
inline constexpr std::string_view kAskAgain =
    "Not lost. Check power and cable, stay on this page and press Refresh Status. "
    "When the motor responds, press Begin Programming again. "
    "When it does not, press Back until you see the page with the port, and go on from there with the same "
    "package.";
inline constexpr std::string_view kChooseAgain =
    "Not lost. Press Back, fetch the package again if it is gone, choose it, press Next, and press Begin "
    "Programming.";
inline constexpr std::string_view kNameRevision =
    "Press Refresh Status and try again. "
    "If the status report says HwRev Unknown, choose a package that names one revision alone, the one of "
    "this motor. Otherwise choose one that names the HwRev of the report.";
inline constexpr std::string_view kOnceMore =
    "Its boot loader could not be asked whether it is outdated. Switch the mount off and on, wait a few "
    "seconds, "
    "press Refresh Status, and press Begin Programming once more.";
inline constexpr std::string_view kResume =
    "Not lost. Program the motor with the same package, beginning on the first page.";
inline constexpr std::string_view kOtherPackage =
    "Press Refresh Status and try again. "
    "If it is refused once more, choose the package that is for this mount.";
inline constexpr std::string_view kSamePackage =
    "Press Yes if this is the package that you chose before, or if you are certain that it is for this "
    "mount.";
inline constexpr std::string_view kSayYes = "Press Yes, with power and cable secure.";
inline constexpr std::string_view kTryOnce =
    "Check power and cable; an adapter that came off only has to be plugged in again. "
    "If the mount had power all the time, press Yes. "
    "If it had not, or if the question comes again, press No and do what the page then says.";
inline constexpr std::string_view kRetry =
    "Check power and cable; an adapter that came off only has to be plugged in again. Press Retry, or Cancel "
    "to stop.";
inline constexpr std::string_view kReadPage = "Press Ok and do what the page then says.";
inline constexpr std::string_view kCycleNow =
    "Switch the mount off and on, wait a few seconds, and only then press Ok.";
inline constexpr std::string_view kOpenAgain = "Check power and cable, and press Next again.";
inline constexpr std::string_view kChooseDevice = "Choose the motors one by one, and program each.";

// For those who have no page before them, but a command line.
inline constexpr std::string_view kCommandAgain =
    "Not lost. Check power and cable, and program the motor again with the same package. If that is refused "
    "because of HwRev, take a package that names one revision alone, the one of this motor.";
inline constexpr std::string_view kCommandCyclePower = "Switch the mount off and on, and wait a few seconds.";
inline constexpr std::string_view kCommandOnceMore =
    "Its boot loader could not be asked whether it is outdated. Switch the mount off and on, wait a few "
    "seconds, and program the motor once more.";

/// A message, told by the words that it holds, and what to do about it.
struct MessageAdvice {
  std::string_view message;
  std::string_view advice;
};

/// All messages between the port and the end of a run that leave the owner something to do.
std::span<const MessageAdvice> OfMessages();

/// What to do about the message that was shown; empty when there is nothing to be told.
std::string_view OfMessage(std::string_view shown);

}  // namespace tarnwick::advice
