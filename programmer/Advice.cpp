#include "programmer/Advice.h"

#include <algorithm>
#include <array>

namespace tarnwick::advice {
namespace {

constexpr std::array kMessages = std::to_array<MessageAdvice>({
    {"Error Opening", kOpenAgain},
    {"No Telescope found on", kOpenAgain},
    {"No Devices found on", kOpenAgain},
    {"QAL file Model doesn't match", kOtherPackage},
    {"QAL file HwRev doesn't match", kNameRevision},
    {"Hardware Revision doesn't match QAL file", kNameRevision},
    {"Model number doesn't match QAL file", kOtherPackage},
    {"Invalid Change in Hardware Revision", kOtherPackage},
    {"No matching devices found in firmware file", kOtherPackage},
    {"model can not be determined", kSamePackage},
    {"Cannot Program more than one device at a time", kChooseDevice},
    {"Your BootLoader on this device needs to be upgraded", kSayYes},
    {"An Error occurred Programming Data at Address", kTryOnce},
    {"Error Verifying Data at Address", kRetry},
    {"Programming Cancelled by User", kReadPage},
    {"Programming Aborted", kReadPage},
    {"No response from MC", kReadPage},
    {"Unable to enter boot", kReadPage},
    {"Unable to start programming", kReadPage},
    {"Unable to end programming", kReadPage},
    {"QAL File Not Found", kReadPage},
    {"no longer the one that was chosen", kReadPage},
    {"Programming Complete", kCycleNow},
});

}  // namespace

std::span<const MessageAdvice> OfMessages() {
  return kMessages;
}

std::string_view OfMessage(std::string_view shown) {
  const auto found = std::find_if(kMessages.begin(), kMessages.end(), [shown](const MessageAdvice& each) {
    return shown.find(each.message) != std::string_view::npos;
  });
  return found == kMessages.end() ? std::string_view() : found->advice;
}

}  // namespace tarnwick::advice
