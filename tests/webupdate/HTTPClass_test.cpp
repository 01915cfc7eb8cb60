// The client over a scripted transport: what it asks for, in which order, and what it tells the user.
#include "webupdate/HTTPClass.h"

#include <gmock/gmock.h>

#include "settings/modDebug.h"
#include "support/HttpDouble.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"

namespace tarnwick::test {
namespace {

using testing::ElementsAre;

class HTTPClassTest : public testing::Test {
 protected:
  HTTPClassTest() {
    const auto record = [this](const std::string& what) { order.push_back(what); };
    site.log = record;
    user.log = record;
    client.Progress = [this](std::int32_t count) { order.push_back("progress " + std::to_string(count)); };
  }
  void Open() {
    ASSERT_TRUE(client.OpenHTTP("server", 8080, "me", "secret"));
    order.clear();
  }

  HttpDouble site;
  UserDouble user;
  HTTPClass client;
  std::vector<std::string> order;
  std::string method = "get";
};

TEST_F(HTTPClassTest, AnswerComesInPiecesReportedOneReadLate) {
  EXPECT_TRUE(client.OpenHTTP("server", 8080, "me", "secret"));
  site.replies["/a"] = {std::string(1500, 'x')};
  EXPECT_EQ(client.SendRequest("/a", method, "ignored", true), std::string(1500, 'x'));
  EXPECT_EQ(method, "GET");
  EXPECT_THAT(order, ElementsAre("session HTTP Client", "connect server:80 me secret", "GET /a reload",
                                 "send |", "read 1024", "read 476", "progress 1024", "pump", "read 0",
                                 "progress 1500", "pump", "progress 1500", "pump", "close"));
  order.clear();
  site.replies["/a"] = {std::string(100, 'y')};
  EXPECT_EQ(client.SendRequestBinary("/a", method), std::string(100, 'y'));
  EXPECT_THAT(order,
              ElementsAre("GET /a", "send |", "read 100", "read 0", "progress 100", "progress 100", "close"));
  order.clear();
  site.replies["/a"].reached = false;
  EXPECT_EQ(client.SendRequest("/a", method), "");
  EXPECT_EQ(client.SendRequestBinary("/a", method), "");
  EXPECT_THAT(order,
              ElementsAre("GET /a", "send |", "pump", "box", "close", "GET /a", "send |", "box", "close"));
}

TEST_F(HTTPClassTest, FormGoesWithTheRequest) {
  Open();
  client.Fields("B\x80 c", "1");
  client.Fields("y", "");
  client.Fields("b\x80 C", "A b-c\n\xE9");
  EXPECT_EQ(client.Fields("Y") + client.Fields("none"), "");
  EXPECT_EQ(client.Fields("b\x80 c"), "A b-c\n\xE9");
  method = "post";
  client.SendRequest("/f", method);
  method = "Get";
  client.SendRequest("/f", method);
  const std::string form = "B%AC%20c=A%20b%2Dc%0A%E9&y=";
  EXPECT_THAT(site.calls, testing::IsSupersetOf(std::vector<std::string>{
                              "POST /f", "send Content-Type: application/x-www-form-urlencoded|" + form,
                              "GET /f?" + form, "send |"}));
  HTTPClass other;
  site.calls.clear();
  other.OpenHTTP("s");
  other.SendRequest("/f", method = "post");
  EXPECT_THAT(site.calls, ElementsAre("session HTTP Client", "connect s:80  ", "POST /f", "send |", "close"));
  EXPECT_EQ(HTTPClass::URLEncode(u"\u20AC") + HTTPClass::URLEncode(u""), "%AC");
}

TEST_F(HTTPClassTest, WhatDoesNotOpenAsksForNothing) {
  Open();
  client.CloseHTTP();
  client.CloseHTTP();
  EXPECT_EQ(client.SendRequest("/a", method), "");
  site.connects = false;
  EXPECT_FALSE(client.OpenHTTP("server"));
  site.opens = false;
  EXPECT_FALSE(client.OpenHTTP("server"));
  EXPECT_EQ(client.SendRequestBinary("/a", method), "");
  EXPECT_THAT(order, ElementsAre("session HTTP Client", "connect server:80  ", "session HTTP Client"));
}

TEST_F(HTTPClassTest, LogTellsWhatWasAskedAndAnswered) {
  const TempFolder folder;
  gDebugFile.reset(std::fopen((folder / "log").c_str(), "wb"));
  SetDebugEnabled(true);
  client.Fields("x", "1");
  client.OpenHTTP("server", 80, "me", "secret");
  client.OpenHTTP("server");
  site.replies["/a?x=1"] = {"<html>unauthorised"};
  client.SendRequest("/a", method);
  client.SendRequestBinary("/a", method);
  CloseDebugLog();
  SetDebugEnabled(false);
  EXPECT_THAT(ReadFile(folder / "log"),
              testing::MatchesRegex("[0-9]+: OpenHTTP: server, me, secret\r\n[0-9]+: OpenHTTP: server\r\n"
                                    "[0-9]+: SendRequest: /a\r\n[0-9]+: SendRequest Response: "
                                    "<html>unauthorised\r\n[0-9]+: SendRequestBinary: /a\r\n"));
}

}  // namespace
}  // namespace tarnwick::test
