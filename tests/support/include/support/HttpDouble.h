// A scripted update site: an answer for each path.
#pragma once

#include <map>
#include <string>

#include "platform/http.h"

namespace tarnwick::test {

/// Installs itself for its lifetime. A path without a reply is missing on the site.
class HttpDouble final : public http::ITransport {
 public:
  HttpDouble() { http::Install(*this); }
  ~HttpDouble() override { http::Uninstall(); }

  std::unique_ptr<http::ISession> OpenSession(const std::string&) override {
    return std::make_unique<Client>(*this);
  }

  std::map<std::string, std::string> replies;

 private:
  /// A session, a connection or a request.
  struct Client final : http::ISession, http::IConnection, http::IRequest {
    explicit Client(HttpDouble& owner) : site(owner) {}
    std::unique_ptr<http::IConnection> Connect(const std::string&, std::uint16_t, const std::string&,
                                               const std::string&) override {
      return std::make_unique<Client>(site);
    }
    std::unique_ptr<http::IRequest> OpenRequest(const std::string&, const std::string& path, bool) override {
      auto request = std::make_unique<Client>(site);
      request->there = site.replies.contains(path);
      if (request->there) request->content = site.replies[path];
      return request;
    }
    bool Send(std::string_view, std::string_view) override { return true; }
    std::int32_t Status() const override { return there ? 200 : 404; }
    std::optional<std::uint64_t> Length() const override { return std::nullopt; }
    bool Read(std::span<char> piece, std::size_t& count) override {
      count = content.copy(piece.data(), piece.size(), taken);
      taken += count;
      return true;
    }

    HttpDouble& site;
    bool there = false;
    std::string content;
    std::size_t taken = 0;
  };
};

}  // namespace tarnwick::test
