// The client and the real transport against a server that does what no server should: catalogue, package and
// file of the program come whole, or nothing changes.
#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <map>
#include <thread>

#include "platform/http/CurlTransport.h"
#include "settings/Settings.h"
#include "support/Loopback.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/HTTPClass.h"
#include "webupdate/Packages.h"
#include "webupdate/Site.h"

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNoConnection = "Internet connection";
constexpr const char* kRefused = "Unauthorised";

enum class End { Close, Reset, Hold };

struct Behaviour {
  std::string name;                         ///< Of a refusal and of a page, its first word says that.
  std::string once;                         ///< The answer to each request.
  std::optional<std::string> content = {};  ///< What a client for bytes makes of it; none for a box.
  std::string again = {};                   ///< Sent behind it over and over, until the client goes.
  int pause = 0;         ///< Before each of these, in ms; then little time is given in all.
  End end = End::Close;  ///< Hold: until the client goes.
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

/// The bytes of memory that `work` takes at its height.
std::size_t Height(const std::function<void()>& work) {
  const auto memory = [](const std::string& name) {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != name) continue;
    std::size_t kilobytes = 0;
    status >> kilobytes;
    return kilobytes << 10;
  };
  const std::size_t before = memory("VmRSS:");
  std::ofstream("/proc/self/clear_refs") << 5;  // VmHWM begins anew
  work();
  const std::size_t height = memory("VmHWM:");
#ifdef __SANITIZE_ADDRESS__
  return 0;  // AddressSanitizer keeps what is freed.
#endif
  return height - std::min(before, height);
}

/// A catalogue in which one name alone is harmless.
std::string HostileNames() {
  std::string text;
  for (const std::string name :
       {"../x", "/tmp/x", "..\\x", "a/x", "C:x", "\"x\"", "%2e%2e%2fx", "x\nx", "NUL", ".x", "x\x01"})
    text += "@" + name + ".qal,2005-03-01,1\r\nnote\r\n";
  return text + "@" + std::string(300, 'x') + ".qal,2005-03-01,1\r\n@b.qal,2005-03-01,1\r\nnew note";
}

std::vector<Behaviour> Behaviours() {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
  const std::string some(64 << 10, 'x');
  const std::string names = HostileNames();
  const std::string most(http::kLargestAnswer, 'x');
  return {
      {"closes without a word", ""},
      {"resets without a word", "", {}, {}, 0, End::Reset},
      {"says nothing", "", {}, {}, 0, End::Hold},
      {"closes in the status line", "HTTP/1.1 20"},
      {"closes in the headers", ok + "Content-Le"},
      {"closes before the content", ok + "Content-Length: 4\r\n\r\n"},
      {"closes in the content", ok + "Content-Length: 40\r\n\r\n" + some.substr(0, 39)},
      {"resets in the content", ok + "Content-Length: 40\r\n\r\n" + some.substr(0, 9), {}, {}, 0, End::Reset},
      {"stalls in the headers", ok + "Content-Length: 4\r\n", {}, {}, 0, End::Hold},
      {"stalls in the content", ok + "Content-Length: 40\r\n\r\nabcd", {}, {}, 0, End::Hold},
      {"tells too short a length", ok + "Content-Length: 4\r\n\r\nabcdefgh", "abcd"},
      {"tells two lengths", ok + "Content-Length: 4\r\nContent-Length: 8\r\n\r\nabcdefgh", "abcdefgh"},
      {"tells a length below zero", ok + "Content-Length: -4\r\n\r\nabcd"},
      {"tells a length of a terabyte", ok + "Content-Length: 1099511627776\r\n\r\n", {}, some},
      {"tells a length beyond numbers", ok + "Content-Length: 99999999999999999999\r\n\r\n", {}, some},
      {"trickles headers", ok, {}, "a: b\r\n", 40},
      {"trickles content", ok + "Content-Length: 4000\r\n\r\n", {}, "x", 40},
      {"never ends", ok + "\r\n", {}, some},
      {"never ends in chunks", chunked, {}, "10000\r\n" + some + "\r\n"},
      {"never ends a failure", "HTTP/1.1 500 Oh\r\n\r\n", {}, some},
      {"never ends a redirection", "HTTP/1.1 302 Oh\r\nLocation: /\r\n\r\n", {}, some, 1},
      {"never ends its headers", ok, {}, "a: " + some.substr(0, 1000) + "\r\n"},
      {"never ends one header", ok + "a: ", {}, some},
      {"never ends to continue", "", {}, "HTTP/1.1 100 Continue\r\n\r\n"},
      {"breaks off between chunks", chunked + "4\r\nabcd\r\n"},
      {"sends a chunk without a size", chunked + "four\r\nabcd\r\n0\r\n\r\n"},
      {"sends a chunk of all memory", chunked + "FFFFFFFFFFFFFFFF\r\n" + some},
      {"packs what was not to be packed", ok + "Content-Encoding: GZIP\r\nContent-Length: 4\r\n\r\nabcd"},
      {"packs the transfer", ok + "Transfer-Encoding: deflate, chunked\r\n\r\n4\r\nabcd\r\n0\r\n\r\n"},
      {"redirects to a file", "HTTP/1.1 302 Oh\r\nLocation: file:///etc/passwd\r\n\r\n"},
      {"redirects to itself", "HTTP/1.1 301 Oh\r\nLocation: /\r\nContent-Length: 0\r\n\r\n"},
      {"redirects to nowhere", "HTTP/1.1 301 Oh\r\nLocation: http://%00/\r\nContent-Length: 0\r\n\r\n"},
      {"speaks before there were headers", "content"},
      {"speaks something else", "SSH-2.0-x\r\n", {}, {}, 0, End::Hold},
      {"has a status beyond numbers", "HTTP/1.1 99999 OK\r\n\r\nabcd"},
      {"has NUL bytes in its headers", std::string("HTTP/1.1 200 OK\r\na\0b: c\r\n\r\nabcd", 31)},
      {"sends a part", "HTTP/1.1 206 Part\r\nContent-Range: bytes 0-3/8\r\nContent-Length: 4\r\n\r\nabcd"},
      {"sends nothing, by status", "HTTP/1.1 204 No\r\n\r\n", ""},
      {"answers for another, as portals do", ok + "\r\n<html>Log in", "<html>Log in"},
      {"answers for another at length", ok + "\r\n\r\n <!doctype HTML><p>", "\r\n <!doctype HTML><p>"},
      {"refuses by a page", ok + "\r\n<hTmL>uNAUTHORISED", "<hTmL>uNAUTHORISED"},
      {"refuses by a page, backwards", ok + "\r\nUnauthorised<HTML>", "Unauthorised<HTML>"},
      {"only looks as if it refused", ok + "\r\nUNAUTHORISED <HTM>", "UNAUTHORISED <HTM>"},
      {"refuses by asking", "HTTP/1.1 401 No\r\n\r\npage", {}},
      {"refuses by status", "HTTP/1.1 403 No\r\n\r\npage", {}},
      {"has not got it", "HTTP/1.1 404 No\r\n\r\npage"},
      {"thinks that it is known", "HTTP/1.1 304 Known\r\n\r\n"},
      {"names what is not its own", ok + "\r\n" + names, names},
      {"sends all that there may be", ok + "Content-Length: 67108864\r\n\r\n", most, some},
  };
}

/// All below a folder, by their paths from there.
std::map<std::string, std::string> FilesBelow(const TempFolder& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder.Path()))
    files[fs::relative(entry.path(), folder.Path())] = entry.is_directory() ? "" : ReadFile(entry.path());
  return files;
}

class HttpHostileTest : public testing::Test {
 protected:
  HttpHostileTest() {
    DomainName = "127.0.0.1", DomainUser = "me", DomainPassword = "secret";
    http::CurlTransport().OpenSession("loads the library");
  }
  /// Runs one request, which may take the memory of its answer and little more.
  void Ask(const std::function<void(HTTPClass&)>& work) {
    user.boxes.clear();
    HTTPClass client;
    ASSERT_TRUE(OpenSite(client));
    EXPECT_LT(Height([&] { work(client); }), http::kLargestAnswer + (16 << 20));
  }
  void ExpectBox(const char* words) {
    EXPECT_EQ(user.boxes.size(), words == nullptr ? 0U : 1U);
    EXPECT_NE(user.LastText().find(words == nullptr ? "" : words), std::string::npos) << user.LastText();
  }
  UserDouble user;
};

TEST_F(HttpHostileTest, WholeOrNothing) {
  for (const Behaviour& behaviour : Behaviours()) {
    SCOPED_TRACE(behaviour.name);
    HostileServer server(behaviour);
    http::Limits limits;
    if (behaviour.end == End::Hold) limits.stall = std::chrono::milliseconds(200);
    if (behaviour.pause > 0) limits.total = std::chrono::milliseconds(500);
    http::CurlTransport transport(limits);
    const PortMap map(transport, server.Port());
    const std::string content = behaviour.content.value_or("");
    const bool refused = behaviour.name.starts_with("refuses");
    const bool page = behaviour.name.starts_with("answers");
    const char* const box = behaviour.content ? nullptr : kNoConnection;

    std::string answer;
    std::string method = "GET";
    Ask([&](HTTPClass& client) { answer = client.SendRequestBinary("/", method); });
    EXPECT_TRUE(answer == content) << answer.substr(0, 100);
    ExpectBox(box);

    answer = std::string();
    Catalogue catalogue;
    Ask([&](HTTPClass& client) { catalogue.Load(answer = FetchText(client, CataloguePath()), 0); });
    EXPECT_TRUE(answer == (refused ? "" : content)) << answer.substr(0, 100);
    EXPECT_EQ(catalogue.FileCount(), content.starts_with("@") ? 1 : 0);
    ExpectBox(refused ? kRefused : box);

    const TempFolder folder;
    fs::create_directory(folder / "packages");
    WriteFile(folder / "packages/a.qal", "old package");
    WriteFile(folder / "packages/a.txt", "old note");
    auto expected = FilesBelow(folder);
    std::vector<FileEntry> entries{{"a", "qal", "2005-03-01", 3, "new note\r\n", true, true}};
    if (catalogue.FileCount() > 0) entries.push_back(catalogue.Files(1));
    for (FileEntry& entry : entries) {
      const bool comes = !refused && !page && !content.empty();
      Ask([&](HTTPClass& client) { EXPECT_EQ(DownloadPackage(client, folder / "packages", entry), comes); });
      ExpectBox(refused ? kRefused : page ? kNoConnection : box);
      if (!comes) continue;
      expected["packages/" + FileNameOf(entry)] = content;
      expected["packages/" + entry.Name + ".txt"] = "new note\r\n";
    }
    EXPECT_TRUE(FilesBelow(folder) == expected);
  }
}

}  // namespace
}  // namespace tarnwick::test
