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

std::vector<Behaviour> Behaviours() {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
  std::string some, most;
  while (some.size() < (64 << 10)) some += std::to_string(some.size()) + ' ';
  some.resize(64 << 10);
  while (most.size() < http::kLargestAnswer) most += some;
  return {
      {"closes without a word", "", {}, {}, 0, "broken off"},
      {"says nothing", "", {}, {}, 10, "too slow"},
      {"closes in the content",
       ok + "Content-Length: 40\r\n\r\n" + some.substr(0, 39),
       {},
       {},
       0,
       "broken off"},
      {"stalls in the content", ok + "Content-Length: 40\r\n\r\nabcd", {}, {}, 10, "too slow"},
      {"tells too short a length", ok + "Content-Length: 4\r\n\r\nabcdefgh", "abcd"},
      {"tells a length of a terabyte",
       ok + "Content-Length: 1099511627776\r\n\r\n",
       {},
       some,
       0,
       "too large"},
      {"trickles content", ok + "Content-Length: 4000\r\n\r\n", {}, "x", 40},
      {"never ends", ok + "\r\n", {}, some, 0, "too large"},
      {"never ends a failure", "HTTP/1.1 500 Oh\r\n\r\n", {}, some},
      {"never ends a redirection", "HTTP/1.1 302 Oh\r\nLocation: /\r\n\r\n", {}, some, 1},
      {"never ends its headers", ok, {}, "a: " + some.substr(0, 1000) + "\r\n"},
      {"never ends to continue", "", {}, "HTTP/1.1 100 Continue\r\n\r\n"},
      {"sends chunks", chunked + "4\r\nabcd\r\n1\r\n\0\r\n0\r\n\r\n"s, "abcd\0"s},
      {"breaks off between chunks", chunked + "4\r\nabcd\r\n"},
      {"sends a chunk of all memory", chunked + "FFFFFFFFFFFFFFFF\r\n" + some},
      {"packs what was not to be packed", ok + "Content-Encoding: GZIP\r\nContent-Length: 4\r\n\r\nabcd"},
      {"packs the transfer", ok + "Transfer-Encoding: deflate, chunked\r\n\r\n4\r\nabcd\r\n0\r\n\r\n"},
      {"redirects to a file", "HTTP/1.1 302 Oh\r\nLocation: file:///etc/passwd\r\n\r\n"},
      {"speaks something else", "SSH-2.0-x\r\n", {}, {}, 10},
      {"sends a part", "HTTP/1.1 206 Part\r\nContent-Range: bytes 0-3/8\r\nContent-Length: 4\r\n\r\nabcd"},
      {"sends nothing, by status", "HTTP/1.1 204 No\r\n\r\n", ""},
      {"answers for another, as portals do", ok + "\r\n<html>Log in", "<html>Log in"},
      {"answers at length", ok + "\r\n\r\n <!doctype HTML><p>", "\r\n <!doctype HTML><p>"},
      {"answers with a mark", ok + "\r\n\xEF\xBB\xBF<!DOCTYPE html>", "\xEF\xBB\xBF<!DOCTYPE html>"},
      {"answers in XML", ok + "\r\n<?xml version=\"1.0\"?><html/>", "<?xml version=\"1.0\"?><html/>"},
      {"answers with a comment", ok + "\r\n<!-- sign in -->\n<html>", "<!-- sign in -->\n<html>"},
      {"answers with a script", ok + "\r\n\n\n<script>top.location='/'</script>",
       "\n\n<script>top.location='/'</script>"},
      {"answers with a refresh", ok + "\r\n<META http-equiv=refresh>", "<META http-equiv=refresh>"},
      {"answers in UTF-16", ok + "\r\n" + std::string("\xFE\xFF\0<\0h", 6), std::string("\xFE\xFF\0<\0h", 6)},
      {"answers in WISPr", ok + "\r\n<WISPAccessGatewayParam>", "<WISPAccessGatewayParam>"},
      {"wants a sign-in for the network", "HTTP/1.1 511 Network Authentication Required\r\n\r\n<html>"},
      {"wants a sign-in for the proxy", "HTTP/1.1 407 No\r\nProxy-Authenticate: Basic realm=x\r\n\r\n<html>"},
      {"cannot reach the site, as proxies say", "HTTP/1.1 504 Gateway Timeout\r\n\r\n<html>"},
      {"refuses by a page", ok + "\r\n<hTmL>uNAUTHORISED", "<hTmL>uNAUTHORISED"},
      {"refuses by a page, backwards", ok + "\r\nUnauthorised<HTML>", "Unauthorised<HTML>"},
      {"only looks as if it refused", ok + "\r\nUNAUTHORISED <HTM>", "UNAUTHORISED <HTM>"},
      {"refuses by status", "HTTP/1.1 403 No\r\n\r\npage", {}},
      {"has not got it", "HTTP/1.1 404 No\r\n\r\npage", {}, {}, 0, "not found"},
      {"sends all that there may be", ok + "Content-Length: 67108864\r\n\r\n", most, some},
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
  const Behaviour answers{"", "HTTP/1.1 200 OK\r\n\r\ncontent"}, insists{"", asks}, circles{"", moves};
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
  const Behaviour answers{"", "HTTP/1.1 200 OK\r\n\r\ncontent"};
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
  for (const Behaviour& behaviour : Behaviours()) {
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
  const Behaviour behaviours[] = {{"says nothing", "", {}, {}, 10},
                                  {"stalls in the content", begin + "abcd", {}, {}, 10},
                                  {"trickles content", begin, {}, "x", 5},
                                  {"sends without a break", begin, {}, some}};
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
