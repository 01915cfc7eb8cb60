// One request over libcurl's multi interface, pulled by its reader.
#pragma once

#include <curl/curl.h>

#include <string>

#include "CurlApi.h"
#include "platform/http/CurlTransport.h"

namespace tarnwick::http {

class CurlRequest final : public IRequest {
 public:
  CurlRequest(const CurlApi& curl, const Limits& limits);
  ~CurlRequest() override;
  CurlRequest(const CurlRequest&) = delete;
  CurlRequest& operator=(const CurlRequest&) = delete;

  /// Before anything else. False when libcurl has no memory for a request.
  bool Open(const Server& server, const std::string& method, const std::string& path, bool reload);

  bool Send(std::string_view headers, std::string_view body) override;
  std::int32_t Status() const override;
  std::optional<std::uint64_t> Length() const override;
  bool Read(std::span<char> piece, std::size_t& count) override;
  Cause WhyNot() const override { return mCause; }

 private:
  static std::size_t OnHeader(char* data, std::size_t size, std::size_t items, void* self);
  static std::size_t OnBody(char* data, std::size_t size, std::size_t items, void* self);

  void SetLimits();
  void SetAddress(const Server& server, const std::string& path);
  void SetMethod(const std::string& method);
  void AddHeader(const std::string& line);
  bool TakeHeader(std::string_view line);
  std::size_t TakeBody(std::string_view data);
  /// Waits until bytes of the body are there, or the answer has ended.
  void WaitForBody();
  void Step();
  /// The answer has ended as `result` tells.
  void End(CURLcode result);
  /// The answer has ended by a limit of ours.
  void GiveUp(Failure failure, std::string words);

  const CurlApi& mCurl;
  const Limits mLimits;
  CURL* mEasy = nullptr;
  CURLM* mMulti = nullptr;
  curl_slist* mHeaders = nullptr;

  std::string mWaiting;  ///< Bytes of the body that came and are not read yet, behind `mTaken`.
  std::size_t mTaken = 0;
  std::uint64_t mHeaderBytes = 0;
  std::uint64_t mBodyBytes = 0;
  bool mHeadersWhole = false;  ///< Of the last answer that began.
  bool mEncoded = false;       ///< The answer is compressed, though nobody asked for that.
  bool mHeard = false;         ///< Something came since this was last looked at.
  bool mPaused = false;        ///< libcurl keeps the next bytes until there is room.
  bool mEnded = false;
  Cause mCause;          ///< Set where the answer ended otherwise.
  bool mWhole = false;  ///< It ended as it should.
};

}  // namespace tarnwick::http
