// What the system's calls have to keep on Windows. The program is its own child as well, by its first word.
#include <gtest/gtest.h>

#include <iostream>

#include "link/LinkLibrary.h"
#include "platform/FileLock.h"
#include "platform/SharedLibrary.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/program.h"
#include "platform/serial.h"
#include "support/TempFolder.h"

namespace tarnwick {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;

TEST(Files, LieAtPathsOfAnyLengthAndLanguage) {
  const TempFolder folder;
  fs::path deep = folder.Path();
  for (int i = 0; i < 8; ++i) ASSERT_FALSE(files::MakeFolder(deep /= std::string(50, 'd')));
  const fs::path file = deep / "K\xC3\xA4" "fer \xD0\x96.txt", other = deep / "other";
  EXPECT_FALSE(files::Create(file, "one", fs::perms(0644)));
  EXPECT_TRUE(files::Create(file, "two", fs::perms(0644)));
  EXPECT_FALSE(files::Append(file, " more"));
  EXPECT_EQ(files::ReadWhole(file), "one more");
  EXPECT_FALSE(files::Replace(file, std::string(3'000'000, 'x')));
  EXPECT_EQ(files::ReadWhole(file), std::string(3'000'000, 'x'));
  EXPECT_EQ(files::ReadWhole(file, 2'999'999), std::nullopt);
  EXPECT_FALSE(files::Rename(file, other));
  EXPECT_TRUE(files::FileExists(other) && !files::FileExists(file));
  std::tm day{};
  day.tm_mday = 5, day.tm_mon = 2, day.tm_year = 105;
  EXPECT_TRUE(files::SetLastModified(other, day));
  const auto date = files::LastModified(other);
  EXPECT_TRUE(date && date->tm_mday == 5 && date->tm_mon == 2 && date->tm_year == 105);
  EXPECT_FALSE(files::Remove(other));
  EXPECT_EQ(files::Remove(other), std::errc::no_such_file_or_directory);
  EXPECT_TRUE(files::IsWritable(deep) && !files::IsWritable(deep / "none"));
  for (; deep != folder.Path(); deep = deep.parent_path()) fs::remove(LR"(\\?\)" + deep.native());
}

TEST(Files, AreReplacedWholeOrKept) {
  const TempFolder folder;
  const fs::path file = folder / "file", users = folder / "file.new", left = folder / "file.0123456789abcdef.new";
  for (const fs::path& each : {file, users, left}) test::WriteFile(each, "old");
  {
    std::uintmax_t size = 0;
    std::error_code error;
    const files::Stream reader = files::OpenToRead(file, size, error);
    EXPECT_TRUE(reader && size == 3);
    files::Staged first(file), second(file);
    EXPECT_FALSE(first.Write("first"));
    EXPECT_FALSE(second.Write("second"));
    EXPECT_FALSE(first.Commit());
    EXPECT_FALSE(second.Commit());
  }
  EXPECT_EQ(test::ReadFile(file), "second");
  EXPECT_TRUE(files::FileExists(users) && !files::FileExists(left));
  EXPECT_TRUE(files::Replace(folder.Path(), "new"));
  for (const fs::path& none : {folder.Path(), fs::path("NUL"), fs::path("COM5"), folder / "none"})
    EXPECT_EQ(files::ReadWhole(none), std::nullopt) << none;
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 2);
}

TEST(Lock, IsSharedOrHeldAlone) {
  const TempFolder folder;
  FileLock a, b;
  for (FileLock* each : {&a, &b}) ASSERT_FALSE(each->Open(folder / "lock"));
  EXPECT_FALSE(a.Share() || b.Share() || a.Share());
  EXPECT_EQ(a.Claim(), std::errc::resource_unavailable_try_again);
  b.Release();
  EXPECT_FALSE(a.Claim());
  EXPECT_EQ(b.Share(), std::errc::resource_unavailable_try_again);
  EXPECT_FALSE(a.Share());
  EXPECT_FALSE(b.Share());
  EXPECT_TRUE(a.Claim() && b.Claim());
  a.Release();
  EXPECT_FALSE(b.Claim());
}

TEST(Library, IsUsedWholeOrNotAtAll) {
  const TempFolder folder;
  std::string cause;
  const auto library = SharedLibrary::Open(TARNWICK_LIBRARY, cause);
  ASSERT_TRUE(library) << cause;
  EXPECT_TRUE(library->Find("_getDllVersion@12") && !library->Find("getDllVersion") && !library->Find("_getDllVersion"));
  EXPECT_EQ(LoadLinkLibrary(TARNWICK_LIBRARY)->getDllVersion()[0], program::This().major);
  const std::string whole = test::ReadFile(TARNWICK_LIBRARY);
  for (const std::size_t size : {std::size_t{0}, std::size_t{100}, std::size_t{600}, whole.size() / 2}) {
    test::WriteFile(folder / "torn.dll", whole.substr(0, size));
    EXPECT_FALSE(SharedLibrary::Open(folder / "torn.dll", cause)) << size;
  }
}

TEST(Process, GetsItsWordsUnchanged) {
  const std::string own = program::RunningFile().string();
  const process::Command words{own, "--echo", "a b", "", "q\"uote", R"(back\)", R"(b\\ "c\")", "K\xC3\xA4\xD0\x96"};
  process::Child child;
  ASSERT_FALSE(child.Start(words));
  std::string told, expected;
  while (child.Receive(told, std::chrono::seconds(20))) {
  }
  for (std::size_t i = 2; i < words.size(); ++i) expected += words[i] + "|";
  EXPECT_EQ(told, expected);
  EXPECT_EQ(child.Stop(), 7);
  EXPECT_EQ(child.Start({own + ".none"}), std::errc::no_such_file_or_directory);
}

TEST(Process, LetsItsFileBeReplacedWhileItRuns) {
  const TempFolder folder;
  const fs::path copy = folder / "copy.exe", next = folder / "next";
  fs::copy_file(program::RunningFile(), copy);
  test::WriteFile(next, "next");
  process::Child child;
  std::string told;
  ASSERT_FALSE(child.Start({copy.string(), "--wait"}));
  EXPECT_TRUE(child.Receive(told, std::chrono::seconds(20)));
  EXPECT_FALSE(files::Rename(next, copy));
  EXPECT_EQ(test::ReadFile(copy), "next");
  EXPECT_TRUE(child.Send("\n"));
  EXPECT_EQ(child.Stop(), 7);
}

TEST(Serial, PortsAreThoseThatTheSystemKnows) {
  EXPECT_EQ(serial::StandardDevice(5), "COM5");
  for (const char* none : {"", "COM99", "LPT1", "NUL", "COM5x"}) EXPECT_FALSE(serial::IsPort(none)) << none;
  std::error_code error;
  EXPECT_FALSE(serial::Open("COM99", 19200, error));
  EXPECT_EQ(error, std::errc::no_such_file_or_directory);
  EXPECT_FALSE(serial::Open("NUL", 19200, error));
  EXPECT_EQ(error, std::errc::inappropriate_io_control_operation);
}

}  // namespace
}  // namespace tarnwick

int main(int argc, char** argv) {
  const std::string_view first = argc > 1 ? argv[1] : "";
  if (first == "--echo")
    for (int i = 2; i < argc; ++i) std::cout << argv[i] << "|" << std::flush;
  if (first == "--wait") std::cout << "ready" << std::flush, std::cin.get();
  if (first == "--echo" || first == "--wait") return 7;
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
