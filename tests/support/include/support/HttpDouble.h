// A scripted update site: an answer for each path, what was asked recorded.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/http.h"

namespace tarnwick::test {

struct HttpReply {
  std::string content;
  std::int32_t status = 200;
  bool reached = true;  ///< False: the request cannot be sent.
  bool whole = true;    ///< False: the answer breaks off behind `content`.
};

/// Installs itself for its lifetime. A path without a reply is missing on the site.
class HttpDouble final : public http::ITransport {
 public:
  HttpDouble() { http::Install(*this); }
  ~HttpDouble() override { http::Uninstall(); }

  std::unique_ptr<http::ISession> OpenSession(const std::string& agent) override {
    Note("session " + agent);
    return opens ? std::make_unique<Session>(*this) : nullptr;
  }

  std::map<std::string, HttpReply> replies;
  bool opens = true;
  bool connects = true;
  std::vector<std::string> calls;
  std::function<void(const std::string&)> log;  ///< Told each call as well, for tests of one recorded order.

 private:
  void Note(const std::string& call) {
    calls.push_back(call);
    if (log) log(call);
  }

  struct Request final : http::IRequest {
    Request(HttpDouble& owner, HttpReply what) : site(owner), reply(std::move(what)) {}
    ~Request() override { site.Note("close"); }
    bool Send(std::string_view headers, std::string_view body) override {
      site.Note("send " + std::string(headers) + "|" + std::string(body));
      return reply.reached;
    }
    std::int32_t Status() const override { return reply.status; }
    std::optional<std::uint64_t> Length() const override { return std::nullopt; }
    bool Read(std::span<char> piece, std::size_t& count) override {
      count = reply.content.copy(piece.data(), piece.size(), taken);
      taken += count;
      site.Note("read " + std::to_string(count));
      return count > 0 || reply.whole;
    }
    HttpDouble& site;
    HttpReply reply;
    std::size_t taken = 0;
  };
  struct Connection final : http::IConnection {
    explicit Connection(HttpDouble& owner) : site(owner) {}
    std::unique_ptr<http::IRequest> OpenRequest(const std::string& method, const std::string& path,
                                                bool reload) override {
      site.Note(method + " " + path + (reload ? " reload" : ""));
      const auto found = site.replies.find(path);
      return std::make_unique<Request>(site,
                                       found != site.replies.end() ? found->second : HttpReply{"", 404});
    }
    HttpDouble& site;
  };
  struct Session final : http::ISession {
    explicit Session(HttpDouble& owner) : site(owner) {}
    std::unique_ptr<http::IConnection> Connect(const std::string& server, std::uint16_t port,
                                               const std::string& userName,
                                               const std::string& password) override {
      site.Note("connect " + server + ":" + std::to_string(port) + " " + userName + " " + password);
      return site.connects ? std::make_unique<Connection>(site) : nullptr;
    }
    HttpDouble& site;
  };
};

}  // namespace tarnwick::test
