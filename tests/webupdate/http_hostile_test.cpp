// The client and the real transport against a server that does what no server should.
#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "platform/http/CurlTransport.h"
#include "support/Loopback.h"
#include "support/UserDouble.h"
#include "webupdate/HTTPClass.h"

namespace tarnwick::test {
namespace {

enum class End { Close, Reset, Hold };

struct Behaviour {
  const char* name;
  std::string once;               ///< The answer to each request.
  const char* content = nullptr;  ///< What the client makes of it; null for nothing and a box.
  std::string again = {};         ///< Sent behind it over and over, until the client goes.
  int pause = 0;                  ///< Before each of these, in ms; then little time is given in all.
  End end = End::Close;           ///< Hold: until the client goes.
};

/// Answers every request with one behaviour, one connection after the other.
class HostileServer {
 public:
  explicit HostileServer(const Behaviour& behaviour) : mBehaviour(behaviour), mThread([this] { Serve(); }) {}
  ~HostileServer() {
    mStop = true;
    mThread.join();
  }
  std::uint16_t Port() const { return mListener.Port(); }

 private:
  static bool Comes(int socket, int milliseconds) {
    pollfd waiting{socket, POLLIN, 0};
    return ::poll(&waiting, 1, milliseconds) > 0;
  }
  static bool Send(int socket, const std::string& data) {
    return ::send(socket, data.data(), data.size(), MSG_NOSIGNAL) >= 0;
  }
  void Serve() {
    while (!mStop) {
      if (!Comes(mListener.Socket(), 10)) continue;
      const int client = ::accept4(mListener.Socket(), nullptr, nullptr, SOCK_CLOEXEC);
      Answer(client);
      const linger abort{1, 0};
      if (mBehaviour.end == End::Reset) ::setsockopt(client, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
      ::close(client);
    }
  }
  void Answer(int client) {
    std::array<char, 4096> request;
    if (Comes(client, 1000)) ::recv(client, request.data(), request.size(), 0);
    bool there = mBehaviour.once.empty() || Send(client, mBehaviour.once);
    while (there && !mStop && !mBehaviour.again.empty()) {
      if (mBehaviour.pause > 0) ::usleep(static_cast<useconds_t>(mBehaviour.pause) * 1000);
      there = Send(client, mBehaviour.again);
    }
    while (there && !mStop && mBehaviour.end == End::Hold) there = !Comes(client, 10);
  }

  const Behaviour& mBehaviour;
  Listener mListener;
  std::atomic<bool> mStop = false;
  std::thread mThread;
};

/// A size of this process, as "VmRSS" or "VmHWM", in KB.
long Memory(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == name + ":" && status >> word) return std::stol(word);
  }
  return 0;
}

/// AddressSanitizer keeps what is freed.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kTrueMemory = false;
#else
constexpr bool kTrueMemory = true;
#endif

std::vector<Behaviour> Behaviours() {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
  const std::string some(64 << 10, 'x');
  return {
      {"closes without a word", ""},
      {"resets without a word", "", nullptr, {}, 0, End::Reset},
      {"says nothing", "", nullptr, {}, 0, End::Hold},
      {"closes in the status line", "HTTP/1.1 20"},
      {"closes in the headers", ok + "Content-Le"},
      {"closes before the content", ok + "Content-Length: 4\r\n\r\n"},
      {"closes in the content", ok + "Content-Length: 40\r\n\r\n" + some.substr(0, 39)},
      {"resets in the content",
       ok + "Content-Length: 40\r\n\r\n" + some.substr(0, 9),
       nullptr,
       {},
       0,
       End::Reset},
      {"stalls in the headers", ok + "Content-Length: 4\r\n", nullptr, {}, 0, End::Hold},
      {"stalls in the content", ok + "Content-Length: 40\r\n\r\nabcd", nullptr, {}, 0, End::Hold},
      {"tells too short a length", ok + "Content-Length: 4\r\n\r\nabcdefgh", "abcd"},
      {"tells two lengths", ok + "Content-Length: 4\r\nContent-Length: 8\r\n\r\nabcdefgh", "abcdefgh"},
      {"tells a length below zero", ok + "Content-Length: -4\r\n\r\nabcd"},
      {"tells a length of a terabyte", ok + "Content-Length: 1099511627776\r\n\r\n", nullptr, some},
      {"tells a length beyond numbers", ok + "Content-Length: 99999999999999999999\r\n\r\n", nullptr, some},
      {"trickles headers", ok, nullptr, "a: b\r\n", 40},
      {"trickles content", ok + "Content-Length: 4000\r\n\r\n", nullptr, "x", 40},
      {"never ends", ok + "\r\n", nullptr, some},
      {"never ends in chunks", chunked, nullptr, "10000\r\n" + some + "\r\n"},
      {"never ends a failure", "HTTP/1.1 500 Oh\r\n\r\n", nullptr, some},
      {"never ends a redirection", "HTTP/1.1 302 Oh\r\nLocation: /\r\n\r\n", nullptr, some, 1},
      {"never ends its headers", ok, nullptr, "a: " + some.substr(0, 1000) + "\r\n"},
      {"never ends one header", ok + "a: ", nullptr, some},
      {"never ends to continue", "", nullptr, "HTTP/1.1 100 Continue\r\n\r\n"},
      {"breaks off between chunks", chunked + "4\r\nabcd\r\n"},
      {"sends a chunk without a size", chunked + "four\r\nabcd\r\n0\r\n\r\n"},
      {"sends a chunk of all memory", chunked + "FFFFFFFFFFFFFFFF\r\n" + some},
      {"packs what was not to be packed", ok + "Content-Encoding: GZIP\r\nContent-Length: 4\r\n\r\nabcd"},
      {"packs the transfer", ok + "Transfer-Encoding: deflate, chunked\r\n\r\n4\r\nabcd\r\n0\r\n\r\n"},
      {"redirects to a file", "HTTP/1.1 302 Oh\r\nLocation: file:///etc/passwd\r\n\r\n"},
      {"redirects to itself", "HTTP/1.1 301 Oh\r\nLocation: /\r\nContent-Length: 0\r\n\r\n"},
      {"redirects to nowhere", "HTTP/1.1 301 Oh\r\nLocation: http://%00/\r\nContent-Length: 0\r\n\r\n"},
      {"speaks before there were headers", "content"},
      {"speaks something else", "SSH-2.0-x\r\n", nullptr, {}, 0, End::Hold},
      {"has a status beyond numbers", "HTTP/1.1 99999 OK\r\n\r\nabcd"},
      {"has NUL bytes in its headers", std::string("HTTP/1.1 200 OK\r\na\0b: c\r\n\r\nabcd", 31)},
      {"sends a part", "HTTP/1.1 206 Part\r\nContent-Range: bytes 0-3/8\r\nContent-Length: 4\r\n\r\nabcd"},
      {"sends nothing, by status", "HTTP/1.1 204 No\r\n\r\n", ""},
      {"answers for another, as portals do", ok + "Content-Type: text/html\r\n\r\n<html>Log in",
       "<html>Log in"},
  };
}

TEST(HttpHostileTest, WholeOrNothing) {
  UserDouble user;
  std::string method = "GET";
  { http::CurlTransport().OpenSession("loads the library"); }
  const long before = Memory("VmRSS");
  for (const Behaviour& behaviour : Behaviours()) {
    SCOPED_TRACE(behaviour.name);
    HostileServer server(behaviour);
    http::Limits limits;
    limits.stall = std::chrono::milliseconds(200);
    if (behaviour.pause > 0) limits.total = std::chrono::milliseconds(500);
    http::CurlTransport transport(limits);
    const PortMap map(transport, server.Port());
    for (const bool binary : {false, true}) {
      user.boxes.clear();
      HTTPClass client;
      ASSERT_TRUE(client.OpenHTTP("127.0.0.1", 80, "me", "secret"));
      const std::string answer =
          binary ? client.SendRequestBinary("/", method) : client.SendRequest("/", method);
      EXPECT_TRUE(answer == (behaviour.content == nullptr ? "" : behaviour.content)) << answer.substr(0, 100);
      EXPECT_EQ(user.boxes.size(), behaviour.content == nullptr ? 1U : 0U);
      EXPECT_NE(user.LastText().find(behaviour.content == nullptr ? "Internet connection" : ""),
                std::string::npos);
    }
  }
  if (kTrueMemory) {
    EXPECT_LT(Memory("VmHWM") - before, (64 + 16) * 1024);
  }
}

}  // namespace
}  // namespace tarnwick::test
