#include "CurlRequest.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/text.h"

namespace tarnwick::http {
namespace {

using Clock = std::chrono::steady_clock;

/// The longest wait between two rounds of painting.
constexpr int kSliceMilliseconds = 10;
/// Where so many bytes wait to be read, the server waits for the reader.
constexpr std::size_t kMostWaiting = std::size_t{256} << 10;
/// What the network hands over at a time: larger ones cost fewer calls.
constexpr long kNetworkPiece = 128L << 10;
constexpr long kMostRedirections = 5;

bool IsHexDigit(char c) {
  return std::string_view("0123456789ABCDEFabcdef").find(c) != std::string_view::npos;
}

/// The path as it may stand in a request: escapes that are there stay, and what has no place in a
/// request gets one. Bytes beyond ASCII keep their value.
std::string Escaped(std::string_view path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string result;
  for (std::size_t i = 0; i < path.size(); ++i) {
    const char c = path[i];
    const auto byte = static_cast<unsigned char>(c);
    const bool escape = c == '%' && i + 2 < path.size() && IsHexDigit(path[i + 1]) && IsHexDigit(path[i + 2]);
    const bool plain =
        byte > 0x20 && byte < 0x7F && std::string_view("\"#%<>[\\]^`{|}").find(c) == std::string_view::npos;
    if (plain || escape) {
      result += c;
    } else {
      result.append({'%', kDigits[byte >> 4], kDigits[byte & 0xF]});
    }
  }
  return result;
}

Failure FailureOf(CURLcode result) {
  switch (result) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return Failure::NoName;
    case CURLE_COULDNT_CONNECT:
      return Failure::NoConnection;
    case CURLE_OPERATION_TIMEDOUT:
      return Failure::TooSlow;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
      return Failure::BrokenOff;
    case CURLE_FILESIZE_EXCEEDED:
      return Failure::TooLarge;
    default:
      return Failure::Other;
  }
}

long Milliseconds(std::chrono::milliseconds duration) {
  return static_cast<long>(duration.count());
}

}  // namespace

CurlRequest::CurlRequest(const CurlApi& curl, const Limits& limits)
    : mCurl(curl), mLimits(limits), mEasy(curl.easyInit()), mMulti(curl.multiInit()) {}

CurlRequest::~CurlRequest() {
  if (mEasy != nullptr && mMulti != nullptr) mCurl.remove(mMulti, mEasy);
  if (mEasy != nullptr) mCurl.easyCleanup(mEasy);
  if (mMulti != nullptr) mCurl.multiCleanup(mMulti);
  mCurl.freeList(mHeaders);
}

bool CurlRequest::Open(const Server& server, const std::string& method, const std::string& path,
                       bool reload) {
  if (mEasy == nullptr || mMulti == nullptr) return false;
  SetLimits();
  SetAddress(server, path);
  SetMethod(method);
  AddHeader("Accept:");
  AddHeader("Accept-Encoding: identity");
  if (reload) {
    AddHeader("Pragma: no-cache");
    AddHeader("Cache-Control: no-cache");
  }
  mCurl.set(mEasy, CURLOPT_HEADERFUNCTION, &CurlRequest::OnHeader);
  mCurl.set(mEasy, CURLOPT_HEADERDATA, this);
  mCurl.set(mEasy, CURLOPT_WRITEFUNCTION, &CurlRequest::OnBody);
  mCurl.set(mEasy, CURLOPT_WRITEDATA, this);
  return true;
}

void CurlRequest::SetLimits() {
  mCurl.set(mEasy, CURLOPT_CONNECTTIMEOUT_MS, Milliseconds(mLimits.connect));
  mCurl.set(mEasy, CURLOPT_TIMEOUT_MS, Milliseconds(mLimits.total));
  mCurl.set(mEasy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(mLimits.answer));
  mCurl.set(mEasy, CURLOPT_MAXREDIRS, kMostRedirections);
  mCurl.set(mEasy, CURLOPT_BUFFERSIZE, kNetworkPiece);
  mCurl.set(mEasy, CURLOPT_NOSIGNAL, 1L);
  // Giving up must not wait for a name server that does not answer.
  mCurl.set(mEasy, CURLOPT_QUICK_EXIT, 1L);
}

void CurlRequest::SetAddress(const Server& server, const std::string& path) {
  // A server that is more than a name makes an address that libcurl refuses, not another server.
  const bool isName = server.name.find_first_of("/?#@\\") == std::string::npos;
  const std::string name = isName ? server.name : std::string();
  const std::string url = "http://" + name + ":" + std::to_string(server.port) + Escaped(path);
  mCurl.set(mEasy, CURLOPT_URL, url.c_str());
  mCurl.set(mEasy, CURLOPT_PATH_AS_IS, 1L);
  // A redirection has to be allowed by both.
  mCurl.set(mEasy, CURLOPT_PROTOCOLS_STR, "http,https");
  mCurl.set(mEasy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  mCurl.set(mEasy, CURLOPT_FOLLOWLOCATION, 1L);
  mCurl.set(mEasy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  mCurl.set(mEasy, CURLOPT_USERAGENT, server.agent.c_str());
  if (server.userName.empty() && server.password.empty()) return;
  mCurl.set(mEasy, CURLOPT_USERNAME, server.userName.c_str());
  mCurl.set(mEasy, CURLOPT_PASSWORD, server.password.c_str());
  // With more than one way to choose from, libcurl asks without credentials first.
  mCurl.set(mEasy, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC | CURLAUTH_DIGEST));
}

void CurlRequest::SetMethod(const std::string& method) {
  if (method == "POST") {
    mCurl.set(mEasy, CURLOPT_POST, 1L);
    mCurl.set(mEasy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t{0});
    mCurl.set(mEasy, CURLOPT_COPYPOSTFIELDS, "");
  } else if (method != "GET") {
    mCurl.set(mEasy, CURLOPT_CUSTOMREQUEST, method.c_str());
  }
}

void CurlRequest::AddHeader(const std::string& line) {
  curl_slist* const list = mCurl.append(mHeaders, line.c_str());
  if (list != nullptr) mHeaders = list;
}

bool CurlRequest::Send(std::string_view headers, std::string_view body) {
  while (!headers.empty()) {
    const std::size_t end = headers.find(text::kLineEnd);
    AddHeader(std::string(headers.substr(0, end)));
    headers =
        end == std::string_view::npos ? std::string_view() : headers.substr(end + text::kLineEnd.size());
  }
  if (body.empty()) {
    AddHeader("Content-Type:");
  } else {
    mCurl.set(mEasy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    mCurl.set(mEasy, CURLOPT_COPYPOSTFIELDS, body.data());
  }
  mCurl.set(mEasy, CURLOPT_HTTPHEADER, mHeaders);
  if (mCurl.add(mMulti, mEasy) != CURLM_OK) {
    GiveUp(Failure::NoTransport, "libcurl does not take the request");
    return false;
  }
  WaitForBody();
  return !mWaiting.empty() || mWhole;
}

std::int32_t CurlRequest::Status() const {
  long status = 0;
  mCurl.get(mEasy, CURLINFO_RESPONSE_CODE, &status);
  return static_cast<std::int32_t>(status);
}

std::optional<std::uint64_t> CurlRequest::Length() const {
  curl_off_t length = -1;
  mCurl.get(mEasy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  if (length < 0) return std::nullopt;
  return static_cast<std::uint64_t>(length);
}

bool CurlRequest::Read(std::span<char> piece, std::size_t& count) {
  if (mTaken == mWaiting.size() && !mEnded) WaitForBody();
  count = std::min(piece.size(), mWaiting.size() - mTaken);
  std::copy_n(mWaiting.data() + mTaken, count, piece.data());
  mTaken += count;
  return count > 0 || mWhole;
}

void CurlRequest::WaitForBody() {
  mWaiting.clear();
  mTaken = 0;
  if (std::exchange(mPaused, false)) mCurl.pause(mEasy, CURLPAUSE_CONT);
  Clock::time_point heard = Clock::now();
  for (Step(); mWaiting.empty() && !mEnded; Step()) {
    if (std::exchange(mHeard, false)) heard = Clock::now();
    if (Clock::now() - heard > mLimits.stall) return GiveUp(Failure::TooSlow, "nothing came for too long");
    mCurl.poll(mMulti, nullptr, 0, kSliceMilliseconds, nullptr);
    Wait();
    if (IsGivenUp()) return GiveUp(Failure::GivenUp, "the user gave up");
  }
}

void CurlRequest::Step() {
  int running = 0;
  if (mCurl.perform(mMulti, &running) != CURLM_OK) GiveUp(Failure::Other, "libcurl cannot go on");
  int left = 0;
  while (const CURLMsg* const message = mCurl.infoRead(mMulti, &left)) {
    if (message->msg == CURLMSG_DONE) End(message->data.result);
  }
}

void CurlRequest::End(CURLcode result) {
  mEnded = true;
  mWhole = result == CURLE_OK && mHeadersWhole && !mEncoded;
  if (mWhole || mCause.failure != Failure::None) return;
  if (mEncoded) return GiveUp(Failure::Packed, "the answer is compressed, though nobody asked for that");
  if (result == CURLE_OK) return GiveUp(Failure::BrokenOff, "the answer ended within its headers");
  GiveUp(FailureOf(result), mCurl.errorText(result));
}

void CurlRequest::GiveUp(Failure failure, std::string words) {
  mEnded = true;
  mCause = {failure, std::move(words)};
}

std::size_t CurlRequest::OnHeader(char* data, std::size_t size, std::size_t items, void* self) {
  return static_cast<CurlRequest*>(self)->TakeHeader({data, size * items}) ? size * items : 0;
}

std::size_t CurlRequest::OnBody(char* data, std::size_t size, std::size_t items, void* self) {
  return static_cast<CurlRequest*>(self)->TakeBody({data, size * items});
}

bool CurlRequest::TakeHeader(std::string_view line) {
  mHeard = true;
  mHeaderBytes += line.size();
  // There is more than one answer after a redirection, or where credentials are asked for.
  if (line.starts_with("HTTP/")) mEncoded = mHeadersWhole = false;
  if (text::CleanLine(line).empty()) mHeadersWhole = true;
  const auto isOtherThan = [line](std::string_view name, std::string_view value) {
    return text::EqualNoCase(line.substr(0, name.size()), name) &&
           !text::EqualNoCase(text::CleanLine(line.substr(name.size())), value);
  };
  if (isOtherThan("Content-Encoding:", "identity") || isOtherThan("Transfer-Encoding:", "chunked")) {
    mEncoded = true;
  }
  if (mHeaderBytes <= mLimits.headers) return true;
  mCause = {Failure::TooLarge, "the headers of the answer are too long"};
  return false;
}

std::size_t CurlRequest::TakeBody(std::string_view data) {
  mHeard = true;
  if (mWaiting.size() >= kMostWaiting) {
    mPaused = true;
    return CURL_WRITEFUNC_PAUSE;
  }
  mBodyBytes += data.size();
  if (mEncoded) return 0;
  if (mBodyBytes > mLimits.answer) {
    mCause = {Failure::TooLarge, "the answer is longer than the program takes"};
    return 0;
  }
  mWaiting.append(data);
  return data.size();
}

}  // namespace tarnwick::http
