// The client and the real transport against a real web server.
#include <gtest/gtest.h>

#include "platform/http/CurlTransport.h"
#include "support/NginxProcess.h"
#include "support/UserDouble.h"
#include "webupdate/HTTPClass.h"

namespace tarnwick::test {
namespace {

constexpr const char* kLocations =
    "location /members/ { auth_basic members; auth_basic_user_file passwords; }"
    "location /chunked/ { ssi on; ssi_types *; }"
    "location /packed/ { gzip on; gzip_types *; gzip_min_length 1; gzip_proxied any; }"
    "location /moved/ { rewrite ^/moved/(.*) /plain/$1 redirect; }";

TEST(HttpNginxTest, FilesComeAsTheyAre) {
  NginxProcess nginx(TARNWICK_NGINX, kLocations);
  std::string content("\0\xFF\r\n", 4);
  while (content.size() < 6'000'000) content += "line " + std::to_string(content.size()) + "\r\n";
  for (const char* const folder : {"plain", "members", "chunked", "packed"}) {
    std::filesystem::create_directory(nginx.site / folder);
    WriteFile(nginx.site / folder / "a.qal", content);
  }
  WriteFile(nginx.site / "plain/a b (100%) \xE9#1.qal", content);
  WriteFile(nginx.site.parent_path() / "passwords", "me:{PLAIN}secret\n");
  const http::CurlTransport transport;
  AskByWayOf(nginx.port);
  UserDouble user;
  const struct {
    const char* path;
    const char* user;
    bool comes;
  } cases[] = {{"/plain/a.qal", "", true},     {"/plain/a b (100%) \xE9#1.qal", "", true},
               {"/members/a.qal", "me", true}, {"/members/a.qal", "you", false},
               {"/chunked/a.qal", "", true},   {"/packed/a.qal", "", true},
               {"/moved/a.qal", "me", true},   {"/plain/missing.qal", "", false},
               {"/plain/", "", false}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.path);
    HTTPClass client;
    std::int32_t last = -1;
    client.Progress = [&last](std::int32_t count) { last = count; };
    user.boxes.clear();
    ASSERT_TRUE(client.OpenHTTP("127.0.0.1", 80, each.user, *each.user == '\0' ? "" : "secret"));
    std::string method = "get";
    EXPECT_TRUE(client.SendRequest(each.path, method) == (each.comes ? content : ""));
    EXPECT_EQ(last, each.comes ? static_cast<std::int32_t>(content.size()) : -1);
    EXPECT_EQ(user.boxes.size(), each.comes ? 0U : 1U);
  }
}

}  // namespace
}  // namespace tarnwick::test
