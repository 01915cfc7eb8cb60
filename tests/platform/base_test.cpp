// Files read and replaced.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/files.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

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

TEST_F(Files, AreReplacedWithTheirModeOrKept) {
  fs::permissions(file, fs::perms::owner_read);
  const fs::path users = folder / "a file.txt.new", left = folder / "a file.txt.0123456789abcdef.new";
  test::WriteFile(users, "mine"), test::WriteFile(left, "half");
  EXPECT_FALSE(files::Replace(file, std::string(3'000'000, 'x')));
  EXPECT_EQ(files::ReadWhole(file), std::string(3'000'000, 'x'));
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read);
  EXPECT_FALSE(fs::exists(left)) << "What a killed program left goes.";
  EXPECT_EQ(test::ReadFile(users), "mine") << "What looks like it does not.";
  fs::remove(users);
  for (const fs::path& none : {folder.Path(), pipe, file / "below"})
    EXPECT_TRUE(files::Replace(none, "new")) << none;
  EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST_F(Files, AreNeverWrittenThroughALink) {
  const fs::path link = folder / "link";
  fs::create_symlink(file, link);
  EXPECT_TRUE(files::Create(link, "new", fs::perms::owner_all));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_FALSE(files::Replace(link, "new"));
  EXPECT_EQ(test::ReadFile(link), "new");
  EXPECT_EQ(test::ReadFile(file), "old");
  fs::remove(link);
}

TEST_F(Files, OneStagedIsLeftToItsWriter) {
  files::Staged first(file), second(file);
  EXPECT_FALSE(first.Write("first"));
  EXPECT_FALSE(second.Write("second"));
  EXPECT_FALSE(first.Commit());
  EXPECT_FALSE(second.Commit());
  EXPECT_EQ(test::ReadFile(file), "second");
}

}  // namespace
}  // namespace tarnwick
