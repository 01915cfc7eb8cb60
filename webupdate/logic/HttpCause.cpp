#include "HttpCause.h"

namespace tarnwick {
namespace {

const char* NameOf(http::Failure failure) {
  switch (failure) {
    case http::Failure::None:
      return "no answer";
    case http::Failure::NoTransport:
      return "no transport";
    case http::Failure::NoName:
      return "no name";
    case http::Failure::NoConnection:
      return "no connection";
    case http::Failure::TooSlow:
      return "too slow";
    case http::Failure::BrokenOff:
      return "broken off";
    case http::Failure::TooLarge:
      return "too large";
    case http::Failure::Packed:
      return "packed";
    case http::Failure::GivenUp:
      return "given up";
    case http::Failure::Other:
      break;
  }
  return "failed";
}

const char* NameOf(std::int32_t status) {
  if (status == 401 || status == 403) return "refused";
  if (status == 404 || status == 410) return "not found";
  return status >= 500 ? "server error" : "no content";
}

}  // namespace

std::string CauseText(const http::Cause& cause) {
  return std::string(NameOf(cause.failure)).append(": ").append(cause.words);
}

std::string CauseText(std::int32_t status) {
  return std::string(NameOf(status)).append(": status ").append(std::to_string(status));
}

}  // namespace tarnwick
