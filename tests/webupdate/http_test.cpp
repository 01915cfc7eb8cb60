// The client and the real transport, by way of a proxy. What a server is asked, byte for byte; and what comes
// from one, which mostly does what no server should: bytes, text and package come whole, or nothing changes.
#include <gmock/gmock.h>
#include <poll.h>

#include <algorithm>
#include <thread>

#include "platform/http/CurlTransport.h"
#include "platform/record.h"
#include "settings/Settings.h"
#include "support/Loopback.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/HTTPClass.h"
#include "webupdate/Packages.h"
#include "webupdate/Site.h"

namespace tarnwick::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;
using namespace std::chrono_literals;
using namespace std::string_literals;

const std::string kNoConnection =
    "Ok !|Unable to connect to the Halcyrion download site.\r\n"
    "Check your Internet connection and firewall settings.\r\nSee Help for more details.";
const std::string kRefused =
    "Ok !|Unable to connect to the Halcyrion download site.\r\nUser is Unauthorised!\r\n"
    "See Help for more details.";

struct Behaviour {
  std::string name;                         ///< Of a refusal and of a page, its first word says that.
  std::string once;                         ///< The answer to each request.
  std::optional<std::string> content = {};  ///< What a client for bytes makes of it; none for a box.
  std::string again = {};                   ///< Sent behind it over and over, until the client goes.
  int pause = 0;           ///< Before each of these, in ms; with none to send, the connection is left open.
  std::string cause = {};  ///< What the record calls it; empty where any cause will do.
};

/// Answers every request with one behaviour, one connection after the other.
class Server {
 public:
  /// With `first`, the first request gets that instead.
  explicit Server(const Behaviour& behaviour, std::string first = {})
      : mBehaviour(behaviour), mFirst(std::move(first)) {
    AskByWayOf(mListener.Port());
  }

  /// What was asked. To be read when the answer is there.
  std::vector<std::string> requests;

 private:
  static bool Comes(int socket, int milliseconds) {
    pollfd waiting{socket, POLLIN, 0};
    return ::poll(&waiting, 1, milliseconds) > 0;
  }
  static bool Send(int socket, const std::string& data) {
    return ::send(socket, data.data(), data.size(), MSG_NOSIGNAL) >= 0;
  }
  void Serve(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      if (!Comes(mListener.Socket(), 10)) continue;
      const int client = ::accept4(mListener.Socket(), nullptr, nullptr, SOCK_CLOEXEC);
      Answer(client, stop);
      ::close(client);
    }
  }
  void Answer(int client, const std::stop_token& stop) {
    std::array<char, 4096> request{};
    if (Comes(client, 1000)) ::recv(client, request.data(), request.size() - 1, 0);
    requests.emplace_back(request.data());
    bool there = Send(client, requests.size() == 1 && !mFirst.empty() ? mFirst : mBehaviour.once);
    const bool goesOn = !mBehaviour.again.empty() || mBehaviour.pause > 0;
    while (there && goesOn && !stop.stop_requested())
      there = !Comes(client, mBehaviour.pause) && Send(client, mBehaviour.again);
  }

  const Behaviour& mBehaviour;
  const std::string mFirst;
  const Listener mListener;
  std::jthread mThread{[this](const std::stop_token& stop) { Serve(stop); }};
};

/// Pages in the place of what was asked for, and what only looks like one.
std::vector<Behaviour> Pages() {
  const auto page = [](const char* name, const std::string& content) {
    return Behaviour{.name = name, .once = "HTTP/1.1 200 OK\r\n\r\n" + content, .content = content};
  };
  return {
      page("answers for another, as portals do", "<html>Log in"),
      page("answers at length", "\r\n <!doctype HTML><p>"),
      page("answers with a mark", "\xEF\xBB\xBF<!DOCTYPE html>"),
      page("answers in XML", "<?xml version=\"1.0\"?><html/>"),
      page("answers with a comment", "<!-- sign in -->\n<html>"),
      page("answers with a script", "\n\n<script>top.location='/'</script>"),
      page("answers with a refresh", "<META http-equiv=refresh>"),
      page("answers in UTF-16", std::string("\xFE\xFF\0<\0h", 6)),
      page("answers in WISPr", "<WISPAccessGatewayParam>"),
      page("refuses by a page", "<hTmL>uNAUTHORISED"),
      page("refuses by a page, backwards", "Unauthorised<HTML>"),
      page("only looks as if it refused", "UNAUTHORISED <HTM>"),
  };
}

std::vector<Behaviour> Behaviours() {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
  std::string some, most;
  while (some.size() < (64 << 10)) some += std::to_string(some.size()) + ' ';
  some.resize(64 << 10);
  while (most.size() < http::kLargestAnswer) most += some;
  return {
      {.name = "closes without a word", .once = "", .cause = "broken off"},
      {.name = "says nothing", .once = "", .pause = 10, .cause = "too slow"},
      {.name = "closes in the content",
       .once = ok + "Content-Length: 40\r\n\r\n" + some.substr(0, 39),
       .cause = "broken off"},
      {.name = "stalls in the content",
       .once = ok + "Content-Length: 40\r\n\r\nabcd",
       .pause = 10,
       .cause = "too slow"},
      {.name = "tells too short a length",
       .once = ok + "Content-Length: 4\r\n\r\nabcdefgh",
       .content = "abcd"},
      {.name = "tells a length of a terabyte",
       .once = ok + "Content-Length: 1099511627776\r\n\r\n",
       .again = some,
       .cause = "too large"},
      {.name = "trickles content", .once = ok + "Content-Length: 4000\r\n\r\n", .again = "x", .pause = 40},
      {.name = "never ends", .once = ok + "\r\n", .again = some, .cause = "too large"},
      {.name = "never ends a failure", .once = "HTTP/1.1 500 Oh\r\n\r\n", .again = some},
      {.name = "never ends a redirection",
       .once = "HTTP/1.1 302 Oh\r\nLocation: /\r\n\r\n",
       .again = some,
       .pause = 1},
      {.name = "never ends its headers", .once = ok, .again = "a: " + some.substr(0, 1000) + "\r\n"},
      {.name = "never ends to continue", .once = "", .again = "HTTP/1.1 100 Continue\r\n\r\n"},
      {.name = "sends chunks", .once = chunked + "4\r\nabcd\r\n1\r\n\0\r\n0\r\n\r\n"s, .content = "abcd\0"s},
      {.name = "breaks off between chunks", .once = chunked + "4\r\nabcd\r\n"},
      {.name = "sends a chunk of all memory", .once = chunked + "FFFFFFFFFFFFFFFF\r\n" + some},
      {.name = "packs what was not to be packed",
       .once = ok + "Content-Encoding: GZIP\r\nContent-Length: 4\r\n\r\nabcd"},
      {.name = "packs the transfer",
       .once = ok + "Transfer-Encoding: deflate, chunked\r\n\r\n4\r\nabcd\r\n0\r\n\r\n"},
      {.name = "redirects to a file", .once = "HTTP/1.1 302 Oh\r\nLocation: file:///etc/passwd\r\n\r\n"},
      {.name = "speaks something else", .once = "SSH-2.0-x\r\n", .pause = 10},
      {.name = "sends a part",
       .once = "HTTP/1.1 206 Part\r\nContent-Range: bytes 0-3/8\r\nContent-Length: 4\r\n\r\nabcd"},
      {.name = "sends nothing, by status", .once = "HTTP/1.1 204 No\r\n\r\n", .content = ""},
      {.name = "wants a sign-in for the network",
       .once = "HTTP/1.1 511 Network Authentication Required\r\n\r\n<html>"},
      {.name = "wants a sign-in for the proxy",
       .once = "HTTP/1.1 407 No\r\nProxy-Authenticate: Basic realm=x\r\n\r\n<html>"},
      {.name = "cannot reach the site, as proxies say", .once = "HTTP/1.1 504 Gateway Timeout\r\n\r\n<html>"},
      {.name = "refuses by status", .once = "HTTP/1.1 403 No\r\n\r\npage"},
      {.name = "has not got it", .once = "HTTP/1.1 404 No\r\n\r\npage", .cause = "not found"},
      {.name = "sends all that there may be",
       .once = ok + "Content-Length: 67108864\r\n\r\n",
       .content = most,
       .again = some},
  };
}

class HttpTest : public testing::Test {
 protected:
  HttpTest() { DomainName = "127.0.0.1", DomainUser = "me", DomainPassword = "secret"; }
  /// Runs one request, which says this, or nothing.
  void Ask(const std::string& box, const std::function<void(HTTPClass&)>& work) {
    HTTPClass client;
    ASSERT_TRUE(OpenSite(client));
    work(client);
    EXPECT_EQ(user.Said(), std::vector<std::string>(box.empty() ? 0 : 1, box));
  }
  UserDouble user;
};

TEST_F(HttpTest, IsAskedForTheFileAndShownCredentialsOnlyWhenItAsks) {
  const std::string end = "Connection: close\r\nContent-Length: 0\r\n\r\n";
  const std::string asks = "HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=x\r\n" + end;
  const std::string moves = "HTTP/1.1 302 There\r\nLocation: http://127.0.0.2/there\r\n" + end;
  const std::string secures = "HTTP/1.1 302 There\r\nLocation: https://127.0.0.2/there\r\n" + end;
  const Behaviour answers{.name = "", .once = "HTTP/1.1 200 OK\r\n\r\ncontent"},
      insists{.name = "", .once = asks}, circles{.name = "", .once = moves};
  const std::string a = "GET http://127.0.0.1/a", there = "GET http://127.0.0.2/there";
  const std::string shown = "\r\nAuthorization: Basic bWU6c2VjcmV0";
  const struct {
    const char* path;
    std::string first;
    const Behaviour& then;
    std::vector<std::string> asked;
    std::string box;
  } cases[] = {
      {"/a b (100%) \xE9#1.qal?%41", "", answers, {a + "%20b%20(100%25)%20%E9%231.qal?%41"}, ""},
      {"/a", asks, answers, {a, a + shown}, ""},
      {"/a", "", insists, {a, a + shown}, kRefused},
      {"/a", moves, answers, {a, there}, ""},
      {"/a", moves, insists, {a, there, there}, kRefused},
      {"/a", secures, insists, {a, "CONNECT 127.0.0.2:443"}, kNoConnection},
      {"/a", "", circles, {a, there, there, there, there, there}, kNoConnection},
  };
  const http::CurlTransport transport;
  for (const auto& each : cases) {
    Server server(each.then, each.first);
    Ask(each.box, [&](HTTPClass& client) {
      EXPECT_EQ(FetchText(client, each.path), each.box.empty() ? "content" : "");
    });
    std::vector<std::string> asked;
    for (const std::string& request : server.requests) {
      const std::size_t shows = std::min(request.find("\r\nAuthorization:"), request.size());
      asked.push_back(request.substr(0, request.find(" HTTP/1.1\r\n")) +
                      request.substr(shows, request.find("\r\nUser-Agent: HTTP Client\r\n") - shows));
    }
    ASSERT_EQ(asked, each.asked);
    EXPECT_THAT(server.requests[0], HasSubstr("\r\nAccept-Encoding: identity\r\nPragma: no-cache\r\n"));
  }
}

TEST_F(HttpTest, GetsAForm) {
  const Behaviour answers{.name = "", .once = "HTTP/1.1 200 OK\r\n\r\ncontent"};
  const http::CurlTransport transport;
  const Server server(answers);
  Ask("", [](HTTPClass& client) {
    client.Fields("B\x80 c", "1");
    client.Fields("b\x80 C", "A b-c\n\xE9");
    EXPECT_EQ(client.Fields("b\x80 c") + client.Fields("none"), "A b-c\n\xE9");
    for (std::string method : {"post", "get"}) EXPECT_EQ(client.SendRequest("/f", method), "content");
  });
  const std::string form = "B%AC%20c=A%20b%2Dc%0A%E9";
  ASSERT_EQ(server.requests.size(), 2U);
  const std::string &post = server.requests[0], &get = server.requests[1];
  EXPECT_TRUE(post.starts_with("POST http://127.0.0.1/f HTTP/1.1\r\n")) << post;
  EXPECT_THAT(post, HasSubstr("\r\nContent-Type: application/x-www-form-urlencoded\r\n"));
  EXPECT_TRUE(post.ends_with("\r\n\r\n" + form)) << post;
  EXPECT_TRUE(get.starts_with("GET http://127.0.0.1/f?" + form + " HTTP/1.1\r\n")) << get;
}

TEST_F(HttpTest, AServerThatDoesWhatNoneShouldGivesAllOrNothing) {
  std::vector<Behaviour> behaviours = Behaviours();
  for (const Behaviour& each : Pages()) behaviours.push_back(each);
  for (const Behaviour& behaviour : behaviours) {
    SCOPED_TRACE(behaviour.name);
    const Server server(behaviour);
    http::Limits limits;
    // Little time is given where none comes to an end: in all, or without a byte.
    if (behaviour.pause > 0) (behaviour.again.empty() ? limits.stall : limits.total) = 300ms;
    const http::CurlTransport transport(limits);
    const std::string content = behaviour.content.value_or("");
    const bool refused = behaviour.name.starts_with("refuses");
    const bool page = behaviour.name.starts_with("answers");
    const std::string box = behaviour.content ? "" : kNoConnection;
    const std::string textBox = refused ? kRefused : box;

    const TempFolder folder;
    record::Open(folder.Path());
    std::string answer, method = "GET";
    Ask(box, [&](HTTPClass& client) { answer = client.SendRequestBinary("/", method); });
    EXPECT_TRUE(answer == content) << answer.substr(0, 100);

    record::Close();
    EXPECT_THAT(ReadFile(folder / "Tarnwick.log"), HasSubstr(behaviour.cause));

    Ask(page ? kNoConnection : textBox, [&](HTTPClass& client) {
      std::int32_t progress = 0;
      client.Progress = [&progress](std::int32_t count) { progress = count; };
      answer = FetchText(client, "/");
      EXPECT_TRUE(answer.empty() || progress == static_cast<std::int32_t>(answer.size()));
      EXPECT_EQ(client.LastAnswer() == AnswerKind::Good, !answer.empty());
      EXPECT_TRUE(!page || client.LastAnswer() == AnswerKind::Page);
    });
    EXPECT_TRUE(answer == (refused || page ? "" : content)) << answer.substr(0, 100);

    WriteFile(folder / "a.qal", "old package");
    FileEntry entry{"a", "qal", "2005-03-01", 3, "new note\r\n", true, true};
    const bool comes = !refused && !page && !content.empty();
    Ask(page ? kNoConnection : textBox,
        [&](HTTPClass& client) { EXPECT_EQ(DownloadPackage(client, folder.Path(), entry), comes); });
    EXPECT_TRUE(ReadFile(folder / "a.qal") == (comes ? content : "old package"));
    EXPECT_EQ(ReadFile(folder / "a.txt"), comes ? "new note\r\n" : "");
  }
}

TEST_F(HttpTest, IsGivenUpAtAnyMoment) {
  const std::string begin = "HTTP/1.1 200 OK\r\nContent-Length: 4000000\r\n\r\n", some(100'000, 'x');
  const Behaviour behaviours[] = {
      {.name = "says nothing", .once = "", .pause = 10},
      {.name = "stalls in the content", .once = begin + "abcd", .pause = 10},
      {.name = "trickles content", .once = begin, .again = "x", .pause = 5},
      {.name = "sends without a break", .once = begin, .again = some},
  };
  const http::CurlTransport transport;
  for (const Behaviour& behaviour : behaviours) {
    SCOPED_TRACE(behaviour.name);
    const Server server(behaviour);
    const TempFolder folder;
    FileEntry entry{"a", "qal", "2005-03-01", 3, "note\r\n", false, true};
    int rounds = 0;
    const auto round = [&rounds] { ++rounds; };
    const InPlace<http::Waiting> waiting({round, [&rounds] { return rounds > 5; }});
    Ask("", [&](HTTPClass& client) {
      client.Progress = [&](std::int32_t) { round(); };
      EXPECT_FALSE(DownloadPackage(client, folder.Path(), entry));
      EXPECT_EQ(client.LastAnswer(), AnswerKind::GivenUp);
    });
    EXPECT_TRUE(fs::is_empty(folder.Path()) && !entry.Local);
  }
}

}  // namespace
}  // namespace tarnwick::test
