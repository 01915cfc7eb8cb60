#include "settings/INIfile.h"

#include <gmock/gmock.h>

#include "support/FileFaults.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

class Document : public testing::Test {
 protected:
  /// What a load of the file gives, each line as "group|section|value;".
  std::string Loaded() {
    std::string lines;
    ini.LoadFile(file);
    for (const auto& l : ini.INIlines()->NewEnum())
      lines += l->Group + "|" + l->Section + "|" + l->Value + ";";
    return lines;
  }
  /// What is written for one line.
  std::string Saved(std::string_view group, std::string_view section = {}, std::string_view value = {}) {
    ini.INIlines()->Clear();
    ini.INIlines()->Add(group, section, value);
    ini.SaveFile(file);
    return test::ReadFile(file);
  }

  test::TempFolder folder;
  fs::path file = folder / "Tarnwick.ini";
  INIfile ini;
};

TEST_F(Document, LoadsEachKindOfLine) {
  const std::pair<std::string_view, const char*> kCases[] = {
      {"\r\n  \t \r\n = value\r\ntext\r\n; comment\r\n", ""},
      {"[Group] ; Note\r\n\t[a=b]\t\r\n", "[GROUP] ; NOTE|[GROUP] ; NOTE|;[A=B]|[A=B]|;"},
      {"k=V\r\n[g]\r\n  k e y\t=\t a = B \r\nkey=\r\n", "|K|V;[G]|[G]|;[G]|K E Y|a = B;[G]|KEY|;"},
      {"k=1\r\nk=2\r\n; comment = kept\r\n\xE4=\xE4\r\n", "|K|1;|K|2;|; COMMENT|kept;|\xC4|\xE4;"},
      {"a\r=\n1\r\nb\nc = d\te\r\nlost=2", "|A|1;|B C|d e;"},
      {"a=1\nb=2\n", ""}};
  for (const auto& [content, lines] : kCases) {
    test::WriteFile(file, content);
    EXPECT_EQ(Loaded(), lines) << content;
  }
}

TEST_F(Document, KeepsAFileThatItCouldNotRead) {
  Saved("[g]");
  fs::resize_file(file, INIfile::kLargestFile + 1);
  EXPECT_EQ(Loaded(), "");
  EXPECT_EQ((Saved("[g]"), Saved("[h]")), "[H]\r\n");
  EXPECT_EQ(fs::file_size(folder / "Tarnwick.ini.old"), INIfile::kLargestFile + 1);
}

TEST_F(Document, IsOldOrNewWhereverASaveFailsOrIsCut) {
  for (const auto fault : {test::Fault::Fail, test::Fault::Kill}) {
    const auto check = [this, fault] {
      EXPECT_THAT(test::ReadFile(file), testing::AnyOf("[OLD]\r\n", "[NEW]\r\n"));
      if (fault == test::Fault::Kill) Saved("[g]");  // It clears away what a kill leaves beside.
      EXPECT_FALSE(fs::exists(folder / "Tarnwick.ini.new"));
    };
    EXPECT_GE(EachFault(
                  fault, [this] { Saved("[old]"); }, [this] { Saved("[new]"); }, check),
              6);
  }
}

}  // namespace
}  // namespace tarnwick
