#include "platform/files.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "support/ReadOnlyFolder.h"
#include "support/TempFolder.h"

namespace tarnwick::files {
namespace {

namespace fs = std::filesystem;
using test::ReadFile;
using test::WriteFile;

class Files : public testing::Test {
 protected:
  /// Names in the folder, to show that nothing is left behind.
  std::size_t Entries() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder.Path()), {}));
  }

  test::TempFolder folder;
  fs::path file = folder / "a file.txt";
};

TEST_F(Files, AreReadWholeUpToALimit) {
  const std::string content("a\0\r\n\xFF", 5);
  WriteFile(file, content);
  EXPECT_EQ(ReadWhole(file), content);
  EXPECT_EQ(ReadWhole(file, 5), content);
  EXPECT_EQ(ReadWhole(file, 4), std::nullopt);
}

TEST_F(Files, AreNotReadWhenTheyAreNone) {
  const fs::path pipe = folder / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const fs::path& path : {folder / "missing", folder.Path(), pipe, fs::path("/dev/zero"), fs::path()}) {
    EXPECT_EQ(ReadWhole(path), std::nullopt) << path;
  }
}

TEST_F(Files, ExistWhenSomethingOfThatNameCanBeReached) {
  WriteFile(file, "");
  EXPECT_TRUE(FileExists(file));
  EXPECT_TRUE(FileExists(folder.Path()));
  for (const fs::path& path :
       {folder / "missing", file / "below", fs::path(), fs::path(std::string(5000, 'x'))}) {
    EXPECT_FALSE(FileExists(path)) << path;
  }
}

TEST_F(Files, AreReplacedWithTheirModeAndThroughALink) {
  EXPECT_FALSE(Replace(file, "first"));
  EXPECT_EQ(ReadFile(file), "first");
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
  const fs::path link = folder / "link";
  fs::create_symlink(file, link);
  const std::string large(3'000'000, 'x');
  EXPECT_FALSE(Replace(link, large));
  EXPECT_EQ(ReadFile(file), large);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(Entries(), 2u);
}

TEST_F(Files, AreKeptWhenTheFolderIsReadOnly) {
  WriteFile(file, "old");
  {
    const test::ReadOnlyFolder locked(folder.Path());
    EXPECT_TRUE(Replace(file, "new"));
    EXPECT_TRUE(Replace(folder / "other", "new"));
  }
  EXPECT_EQ(ReadFile(file), "old");
  EXPECT_EQ(Entries(), 1u);
}

TEST_F(Files, AreKeptWhenTheNewContentsDoNotFit) {
  WriteFile(file, "old");
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{1000, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const std::error_code error = Replace(file, std::string(5000, 'x'));
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(error, std::errc::file_too_large);
  EXPECT_EQ(ReadFile(file), "old");
  EXPECT_EQ(Entries(), 1u);
}

TEST_F(Files, ReplaceNothingButOrdinaryFiles) {
  const fs::path pipe = folder / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  for (const fs::path& path : {folder.Path(), pipe, folder / "missing" / "file", fs::path()}) {
    EXPECT_TRUE(Replace(path, "new")) << path;
  }
  EXPECT_TRUE(fs::is_fifo(pipe));
  EXPECT_EQ(Entries(), 1u);
}

}  // namespace
}  // namespace tarnwick::files
