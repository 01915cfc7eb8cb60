#include "webupdate/HTTPClass.h"

#include <algorithm>
#include <array>

#include "HttpCause.h"
#include "platform/codepage.h"
#include "platform/contain.h"
#include "platform/modDebug.h"
#include "platform/record.h"
#include "platform/text.h"
#include "platform/ui.h"

namespace tarnwick {
namespace {

constexpr const char* kAgent = "HTTP Client";
constexpr std::uint16_t kPort = 80;
constexpr std::size_t kPiece = 1024;
constexpr std::string_view kFormHeader = "Content-Type: application/x-www-form-urlencoded";

constexpr std::string_view kNoConnection =
    "Unable to connect to the Halcyrion download site.\r\n"
    "Check your Internet connection and firewall settings.\r\n"
    "See Help for more details.";
constexpr std::string_view kRefused =
    "Unable to connect to the Halcyrion download site.\r\n"
    "User is Unauthorised!\r\n"
    "See Help for more details.";

std::u16string Widen(std::string_view text) {
  std::u16string wide;
  wide.reserve(text.size());
  for (const char c : text) wide += text::ToUnicode(c);
  return wide;
}

/// A locator may name user and password in front of the server; what stands behind the last "@" is none of
/// them.
std::string WithoutUser(const std::string& place) {
  return place.substr(place.rfind('@') + 1);
}

/// A part of a content that nobody asked a part of is no content either.
bool IsContent(std::int32_t status) {
  return status >= 200 && status < 300 && status != 206;
}

}  // namespace

const HTTPClass::Field* HTTPClass::FindField(std::string_view name) const {
  const auto found = std::find_if(mFields.begin(), mFields.end(), [name](const Field& field) {
    return text::EqualNoCase(field.first, name);
  });
  return found == mFields.end() ? nullptr : &*found;
}

void HTTPClass::Fields(const std::string& name, const std::string& value) {
  if (const Field* const found = FindField(name)) {
    mFields[static_cast<std::size_t>(found - mFields.data())].second = value;
  } else {
    mFields.emplace_back(name, value);
  }
}

std::string HTTPClass::Fields(std::string_view name) const {
  const Field* const found = FindField(name);
  return found == nullptr ? std::string() : found->second;
}

std::string HTTPClass::URLEncode(std::u16string_view data) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string result;
  for (const char16_t c : data) {
    const auto byte = static_cast<unsigned char>(c & 0xFF);
    const bool safe =
        (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
    if (safe) {
      result += static_cast<char>(byte);
    } else {
      result.append({'%', kDigits[byte >> 4], kDigits[byte & 0xF]});
    }
  }
  return result;
}

std::string HTTPClass::BuildFormData() const {
  std::string data;
  for (const auto& [name, value] : mFields) {
    if (!data.empty()) data += '&';
    data += URLEncode(Widen(name)) + "=" + URLEncode(Widen(value));
  }
  return data;
}

bool HTTPClass::OpenHTTP(const std::string& server, std::int32_t, const std::optional<std::string>& userName,
                         const std::optional<std::string>& password) {
  const bool known = userName && password;
  DebugLog("OpenHTTP: " + server + (known ? ", " + *userName + ", " + *password : std::string()));
  CloseHTTP();
  std::string cause;
  if (!http::Ready(cause)) {
    record::Failure("asking the site " + WithoutUser(server), cause);
    return false;
  }
  mServer = {kAgent, server, kPort, userName.value_or(std::string()), password.value_or(std::string())};
  return true;
}

void HTTPClass::CloseHTTP() {
  mServer.reset();
}

std::string HTTPClass::SendRequest(std::string file, std::string& method, const std::string&, bool reload) {
  DebugLog("SendRequest: " + file);
  std::string answer = Ask(file, method, reload, Kind::Text);
  if (DebugEnabled()) DebugLog("SendRequest Response: " + answer);
  if (JudgeContent(answer) == AnswerKind::Refused) {
    record::Failure("fetching " + WithoutUser(mServer->name + file), "refused: a page that says so");
    mLast = AnswerKind::Refused;
    ui::MessageBox(kRefused);
    answer.clear();
  }
  return answer;
}

std::string HTTPClass::SendRequestFile(const std::string& file) {
  std::string method = "GET";
  std::string answer = SendRequest(file, method, {}, true);
  if (mLast != AnswerKind::Good) return {};
  mLast = JudgeContent(answer);
  if (mLast != AnswerKind::Page) return answer;
  record::Failure("fetching " + WithoutUser(mServer->name + file), "a web page came in its place");
  TellNoConnection();
  return {};
}

std::string HTTPClass::SendRequestBinary(std::string file, std::string& method, const std::string&,
                                         bool reload) {
  DebugLog("SendRequestBinary: " + file);
  return Ask(std::move(file), method, reload, Kind::Binary);
}

std::string HTTPClass::Ask(std::string file, std::string& method, bool reload, Kind kind) {
  method = text::Upper(method);
  const std::string form = BuildFormData();
  const bool post = method == "POST";
  if (!form.empty() && !post) file += "?" + form;
  mLast = AnswerKind::None;
  if (!mServer) return {};
  const std::string what = "fetching " + WithoutUser(mServer->name + file);
  const std::unique_ptr<http::IRequest> request = http::OpenRequest(*mServer, method, file, reload);
  if (!request) {
    record::Failure(what, "no request could be made");
    return {};
  }
  const bool withForm = post && !form.empty();
  const bool sent =
      request->Send(withForm ? kFormHeader : std::string_view(), withForm ? form : std::string());
  if (sent && IsContent(request->Status())) return Answer(*request, kind, what);
  mLast = sent ? JudgeStatus(request->Status()) : JudgeFailure(request->WhyNot());
  record::Failure(what, sent ? CauseText(request->Status()) : CauseText(request->WhyNot()));
  if (mLast == AnswerKind::GivenUp) return {};
  if (kind == Kind::Text) ui::PumpEvents();
  const bool refused = sent && (request->Status() == 401 || request->Status() == 403);
  ui::MessageBox(refused && kind == Kind::Text ? kRefused : kNoConnection);
  return {};
}

std::string HTTPClass::Answer(http::IRequest& request, Kind kind, const std::string& what) {
  std::string answer;
  bool whole = false;
  // Where memory runs out, the answer broke off.
  Contain([&] { whole = Receive(request, answer, kind); });
  mLast = AnswerKind::Good;
  if (whole && !http::IsGivenUp()) return answer;
  const http::Cause cause = http::IsGivenUp() ? http::Cause{http::Failure::GivenUp, ""} : request.WhyNot();
  mLast = JudgeFailure(cause);
  record::Failure(what, CauseText(cause));
  if (mLast != AnswerKind::GivenUp) TellNoConnection();
  return {};
}

void HTTPClass::TellNoConnection() {
  ui::MessageBox(kNoConnection);
}

bool HTTPClass::Receive(http::IRequest& request, std::string& answer, Kind kind) {
  // Growing would hold the answer twice for a moment; what is kept free here takes no memory until used.
  Contain([&] {
    answer.reserve(std::min(request.Length().value_or(http::kLargestAnswer), http::kLargestAnswer));
  });
  std::array<char, kPiece> piece;
  std::size_t count = 0;
  bool good = request.Read(piece, count);
  while (good && count != 0) {
    answer.append(piece.data(), count);
    good = !http::IsGivenUp() && request.Read(piece, count);
    Report(answer, kind);
  }
  Report(answer, kind);
  return good;
}

void HTTPClass::Report(const std::string& answer, Kind kind) const {
  if (Progress) Progress(static_cast<std::int32_t>(answer.size()));
  if (kind == Kind::Text) ui::PumpEvents();
}

}  // namespace tarnwick
