#include "platform/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/TempFolder.h"

namespace tarnwick::files {
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
  EXPECT_EQ(ReadWhole(file, 3), "old");
  EXPECT_EQ(ReadWhole(file, 2), std::nullopt);
  for (const fs::path& none : {folder / "missing", folder.Path(), pipe, fs::path("/dev/zero")}) {
    EXPECT_EQ(ReadWhole(none), std::nullopt) << none;
  }
  EXPECT_TRUE(FileExists(folder.Path()) && !FileExists(std::string(5000, 'x')));
}

TEST_F(Files, AreReplacedWithTheirModeAndThroughALink) {
  fs::permissions(file, fs::perms::owner_read);
  fs::create_symlink(file, folder / "link");
  fs::create_symlink(pipe, folder / "a file.txt.new");
  EXPECT_FALSE(Replace(folder / "link", std::string(3'000'000, 'x')));
  EXPECT_EQ(ReadWhole(file), std::string(3'000'000, 'x'));
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read);
  EXPECT_TRUE(fs::is_symlink(folder / "link") && fs::remove(folder / "link"));
}

TEST_F(Files, AreKeptWhereTheyAreNone) {
  for (const fs::path& none : {folder.Path(), pipe, file / "below"})
    EXPECT_TRUE(Replace(none, "new")) << none;
  EXPECT_TRUE(fs::is_fifo(pipe));
}

}  // namespace
}  // namespace tarnwick::files
