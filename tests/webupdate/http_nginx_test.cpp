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
    "location /moved/ { rewrite ^/moved/(.*) /plain/$1 redirect; }"
    "location /away/ { return 302 ftp://127.0.0.1/a; }"
    "location /form/ { error_page 405 =200 /plain/a.qal; set $form "
    "$request_method$content_length$content_type;"
    " if ($form != POST3application/x-www-form-urlencoded) { return 403; } }"
    "location /o/ { return 301 $uri; }";

struct Case {
  const char* path;
  const char* user;
  const char* asked;           ///< What the server logs.
  const char* box;             ///< Words of the box when there is no answer.
  const char* method = "GET";  ///< "post" goes with a form.
};

TEST(HttpNginxTest, FilesComeAsTheyAreAndCredentialsOnlyWhenAskedFor) {
  const Case cases[] = {
      {"/plain/a.qal", "me", "/plain/a.qal 200 [-]\n", nullptr},
      {"/plain/a b (100%) \xE9#1.qal", "", "/plain/a b (100%) \\xE9#1.qal 200 [-]\n", nullptr},
      {"/plain/%61.qal", "", "/plain/a.qal 200 [-]\n", nullptr},
      {"/members/a.qal", "me", "/members/a.qal 401 [-]\n/members/a.qal 200 [Basic bWU6c2VjcmV0]\n", nullptr},
      {"/members/a.qal", "you", "/members/a.qal 401 [-]\n/members/a.qal 401 [Basic eW91OnNlY3JldA==]\n",
       "Unauthorised"},
      {"/members/a.qal", "", "/members/a.qal 401 [-]\n", "Unauthorised"},
      {"/chunked/a.qal", "", "/chunked/a.qal 200 [-]\n", nullptr},
      {"/packed/a.qal", "", "/packed/a.qal 200 [-]\n", nullptr},
      {"/moved/a.qal", "me", "/moved/a.qal 302 [-]\n/plain/a.qal 200 [-]\n", nullptr},
      {"/plain/missing.qal", "", "/plain/missing.qal 404 [-]\n", "Internet connection"},
      {"/plain/", "", "/plain/ 403 [-]\n", "Unauthorised"},
      {"/form/a.qal", "me", "/plain/a.qal 200 [-]\n", nullptr, "post"},
      {"/form/a.qal", "", "/form/a.qal 403 [-]\n", "Unauthorised", "put"},
      {"/away/a.qal", "", "/away/a.qal 302 [-]\n", "Internet connection"},
      {"/o/a", "", "/o/a 301 [-]\n/o/a 301 [-]\n/o/a 301 [-]\n/o/a 301 [-]\n/o/a 301 [-]\n/o/a 301 [-]\n",
       "Internet connection"},
  };
  NginxProcess nginx(TARNWICK_NGINX, kLocations);
  std::string content("\0\xFF\r\n", 4);
  while (content.size() < 6'000'000) content += "line " + std::to_string(content.size()) + "\r\n";
  for (const char* const folder : {"plain", "members", "chunked", "packed", "form"}) {
    std::filesystem::create_directory(nginx.site / folder);
    WriteFile(nginx.site / folder / "a.qal", content);
  }
  WriteFile(nginx.site / "plain/a b (100%) \xE9#1.qal", content);
  WriteFile(nginx.site.parent_path() / "passwords", "me:{PLAIN}secret\n");

  http::CurlTransport transport;
  const PortMap map(transport, nginx.port);
  UserDouble user;
  for (const Case& c : cases) {
    HTTPClass client;
    std::int32_t last = -1;
    client.Progress = [&last](std::int32_t count) { last = count; };
    std::string method = c.method;
    if (method == "post") client.Fields("x", "1");
    user.boxes.clear();
    ASSERT_TRUE(client.OpenHTTP("127.0.0.1", 80, c.user, *c.user == '\0' ? "" : "secret"));
    const std::string answer = client.SendRequest(c.path, method, {}, true);
    EXPECT_TRUE(answer == (c.box == nullptr ? content : "")) << c.path << ": " << answer.size() << " bytes";
    EXPECT_EQ(last, c.box == nullptr ? static_cast<std::int32_t>(content.size()) : -1) << c.path;
    const std::string_view asked(c.asked);
    EXPECT_EQ(nginx.TakeLog(std::count(asked.begin(), asked.end(), '\n')), asked);
    EXPECT_EQ(user.boxes.size(), c.box == nullptr ? 0U : 1U) << c.path;
    EXPECT_NE(user.LastText().find(c.box == nullptr ? "" : c.box), std::string::npos) << user.LastText();
  }
}

}  // namespace
}  // namespace tarnwick::test
