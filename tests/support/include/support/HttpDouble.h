// A scripted update site: an answer for each path, or one failure for all. What it simplifies: nothing is sent,
// no time passes, and neither redirections nor credentials are looked at.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "platform/http.h"

namespace tarnwick::test {

/// Installs itself for its lifetime. A path without a reply is missing on the site.
class HttpDouble final : public http::ITransport {
 public:
  HttpDouble() { Seam<http::ITransport>::Install(*this); }
  ~HttpDouble() override { Seam<http::ITransport>::Uninstall(); }

  bool Ready(std::string& cause) override {
    cause = missing;
    return missing.empty();
  }
  std::unique_ptr<http::IRequest> OpenRequest(const http::Server&, const std::string&,
                                              const std::string& path, bool) override {
    auto request = std::make_unique<Request>();
    request->waits = waits;
    request->status = status.value_or(replies.contains(path) ? 200 : 404);
    request->failure = failure;
    if (replies.contains(path)) request->content = replies[path];
    return request;
  }

  std::map<std::string, std::string> replies;
  /// While it is true, no answer comes.
  std::function<bool()> waits;
  std::string missing;                             ///< What the transport itself lacks.
  std::optional<std::int32_t> status;              ///< Of every answer; 0 where none comes.
  http::Failure failure = http::Failure::None;     ///< What breaks every answer off.

 private:
  struct Request final : http::IRequest {
    bool Send(std::string_view, std::string_view) override {
      while (waits && waits() && !http::IsGivenUp()) http::Wait();
      return status != 0 && !http::IsGivenUp();
    }
    std::int32_t Status() const override { return status; }
    std::optional<std::uint64_t> Length() const override { return std::nullopt; }
    bool Read(std::span<char> piece, std::size_t& count) override {
      count = content.copy(piece.data(), piece.size(), taken);
      taken += count;
      return failure == http::Failure::None;
    }
    http::Cause WhyNot() const override {
      return {http::IsGivenUp() ? http::Failure::GivenUp : failure, "words of the transport"};
    }

    std::function<bool()> waits;
    std::int32_t status = 0;
    http::Failure failure = http::Failure::None;
    std::string content;
    std::size_t taken = 0;
  };
};

}  // namespace tarnwick::test
