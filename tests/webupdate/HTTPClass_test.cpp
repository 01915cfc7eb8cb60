// The client over a scripted transport: what it calls in which order, and what it writes into the log.
#include "webupdate/HTTPClass.h"

#include <gmock/gmock.h>

#include "settings/modDebug.h"
#include "support/HttpDouble.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;

TEST(HTTPClass, ReportsAnAnswerOneReadLateAndLetsTheUserInWhereItIsText) {
  HttpDouble site;
  UserDouble user;
  HTTPClass client;
  std::vector<std::string> order;
  site.log = user.log = [&](const std::string& what) { order.push_back(what); };
  client.Progress = [&](std::int32_t count) { order.push_back("progress " + std::to_string(count)); };
  std::string method = "get";
  EXPECT_EQ(client.SendRequest("/a", method), "");
  EXPECT_TRUE(client.OpenHTTP("server", 8080, "me", "secret"));
  site.replies["/a"] = std::string(1500, 'x');
  EXPECT_EQ(client.SendRequest("/a", method, "ignored", true), std::string(1500, 'x'));
  EXPECT_EQ(method, "GET");
  EXPECT_THAT(order, ElementsAre("session HTTP Client", "connect server:80 me secret", "GET /a reload",
                                 "read 1024", "read 476", "progress 1024", "pump", "read 0", "progress 1500",
                                 "pump", "progress 1500", "pump", "close"));
  order.clear();
  site.replies["/a"] = {std::string(100, 'y')};
  EXPECT_EQ(client.SendRequestBinary("/a", method), std::string(100, 'y'));
  EXPECT_THAT(order, ElementsAre("GET /a", "read 100", "read 0", "progress 100", "progress 100", "close"));
}

TEST(HTTPClass, LogTellsWhatWasAskedAndAnswered) {
  const TempFolder folder;
  HttpDouble site;
  const UserDouble user;
  HTTPClass client;
  gDebugFile.reset(std::fopen((folder / "log").c_str(), "wb"));
  SetDebugEnabled(true);
  client.OpenHTTP("server", 80, "me", "secret");
  client.OpenHTTP("server");
  site.replies["/a"] = {"<html>unauthorised"};
  std::string method = "GET";
  client.SendRequest("/a", method);
  client.SendRequestBinary("/a", method);
  CloseDebugLog();
  EXPECT_THAT(ReadFile(folder / "log"),
              testing::MatchesRegex("[0-9]+: OpenHTTP: server, me, secret\r\n[0-9]+: OpenHTTP: server\r\n"
                                    "[0-9]+: SendRequest: /a\r\n[0-9]+: SendRequest Response: "
                                    "<html>unauthorised\r\n[0-9]+: SendRequestBinary: /a\r\n"));
}

}  // namespace
}  // namespace tarnwick::test
