// Numbers read from texts, and files read and replaced.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/files.h"
#include "platform/text.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

TEST(Text, ReadsANumberFromItsStart) {
  const std::tuple<const char*, double, bool> kCases[] = {
      {"", 0, false},    {" 12 ", 12, true}, {"12a", 12, false}, {"-3.5", -3.5, true},  {"+.5", 0.5, true},
      {"5.", 5, true},   {".", 0, false},    {"+-1", 0, false},  {"1e5", 1, false},     {"0x10", 0, false},
      {"1 2", 1, false}, {"inf", 0, false},  {"\t1", 0, false},  {"1.2.3", 1.2, false}, {"007", 7, true}};
  for (const auto& [text, value, whole] : kCases) {
    EXPECT_EQ(text::NumericPrefix(text), value) << text;
    EXPECT_EQ(text::IsNumeric(text), whole) << text;
  }
}

class Files : public testing::Test {
 protected:
  Files() { test::WriteFile(file, "old"), ::mkfifo(pipe.c_str(), 0600); }
  /// Nothing is left but what each test starts with.
  ~Files() override { EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 2); }

  test::TempFolder folder;
  fs::path file = folder / "a file.txt", pipe = folder / "pipe";
};

TEST_F(Files, AreReadWholeUpToALimit) {
  EXPECT_EQ(files::ReadWhole(file, 3), "old");
  EXPECT_EQ(files::ReadWhole(file, 2), std::nullopt);
  for (const fs::path& none : {folder / "missing", folder.Path(), pipe, fs::path("/dev/zero")})
    EXPECT_EQ(files::ReadWhole(none), std::nullopt) << none;
  EXPECT_TRUE(files::FileExists(folder.Path()) && !files::FileExists(std::string(5000, 'x')));
}

TEST_F(Files, AreReplacedWithTheirModeAndThroughALinkOrKept) {
  fs::permissions(file, fs::perms::owner_read);
  fs::create_symlink(file, folder / "link");
  fs::create_symlink(pipe, folder / "a file.txt.new");
  EXPECT_FALSE(files::Replace(folder / "link", std::string(3'000'000, 'x')));
  EXPECT_EQ(files::ReadWhole(file), std::string(3'000'000, 'x'));
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read);
  EXPECT_TRUE(fs::is_symlink(folder / "link") && fs::remove(folder / "link"));
  for (const fs::path& none : {folder.Path(), pipe, file / "below"})
    EXPECT_TRUE(files::Replace(none, "new")) << none;
  EXPECT_TRUE(fs::is_fifo(pipe));
}

}  // namespace
}  // namespace tarnwick
