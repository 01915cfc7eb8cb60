// A scripted update site: an answer for each path.
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

  bool Ready(std::string&) override { return true; }
  std::unique_ptr<http::IRequest> OpenRequest(const http::Server&, const std::string&,
                                              const std::string& path, bool) override {
    auto request = std::make_unique<Request>();
    request->waits = waits;
    request->there = replies.contains(path);
    if (request->there) request->content = replies[path];
    return request;
  }

  std::map<std::string, std::string> replies;
  /// While it is true, no answer comes.
  std::function<bool()> waits;

 private:
  struct Request final : http::IRequest {
    bool Send(std::string_view, std::string_view) override {
      while (waits && waits() && !http::IsGivenUp()) http::Wait();
      return !http::IsGivenUp();
    }
    std::int32_t Status() const override { return there ? 200 : 404; }
    std::optional<std::uint64_t> Length() const override { return std::nullopt; }
    bool Read(std::span<char> piece, std::size_t& count) override {
      count = content.copy(piece.data(), piece.size(), taken);
      taken += count;
      return true;
    }

    http::Cause WhyNot() const override {
      return {http::IsGivenUp() ? http::Failure::GivenUp : http::Failure::None, {}};
    }

    std::function<bool()> waits;
    bool there = false;
    std::string content;
    std::size_t taken = 0;
  };
};

}  // namespace tarnwick::test
