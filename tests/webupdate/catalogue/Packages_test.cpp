// Packages fetched and removed, with every operation on a file failed and cut in turn: old or new, byte for
// byte, nothing but its own half left beside, and the next attempt works.
#include "webupdate/Packages.h"

#include <gmock/gmock.h>

#include <map>

#include "support/FileFaults.h"
#include "support/HttpDouble.h"
#include "support/TempFolder.h"
#include "support/UserDouble.h"
#include "webupdate/HTTPClass.h"

namespace tarnwick::test {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using Files = std::map<std::string, std::string>;

const Files kOld{{"a.qal", "old package"}, {"a.txt", "old note"}};
const Files kOldNote{{"a.txt", "old note"}};
const Files kNew{{"a.qal", "new package"}, {"a.txt", "new note\r\n"}};

class PackagesTest : public testing::Test {
 protected:
  PackagesTest() { site.replies["/a.qal"] = {kNew.at("a.qal")}; }
  void Prepare(const Files& before) {
    fs::remove_all(home);
    fs::create_directory(home);
    for (const auto& [name, content] : before) WriteFile(home / name, content);
    entry = {"a", "qal", "2005-03-01", 3, "new note\r\n", before.contains("a.qal"), true};
    user.boxes.clear();
  }
  Files Found() const {
    Files found;
    for (const auto& file : fs::directory_iterator(home))
      found[file.path().filename()] = ReadFile(file.path());
    return found;
  }
  bool Download() {
    HTTPClass http;
    return DownloadPackage(http, home, entry);
  }

  TempFolder folder;
  fs::path home = folder / "packages";
  UserDouble user;
  HttpDouble site;
  FileEntry entry;
};

TEST_F(PackagesTest, DownloadLeavesOldOrNew) {
  for (const Fault fault : {Fault::Fail, Fault::Kill}) {
    for (const Files& before : {Files{}, kOld, kOldNote}) {
      Files newNote = before;
      newNote["a.txt"] = kNew.at("a.txt");
      const auto check = [&] {
        Files found = Found();
        if (fault == Fault::Fail) {
          EXPECT_THAT(found, AnyOf(before, kNew));
          EXPECT_EQ(entry.Local, found.contains("a.qal"));
          const Box unable{"Unable to save the file a.qal\r\nNo space left on device"};
          EXPECT_EQ(user.boxes, found == kNew ? std::vector<Box>{} : std::vector{unable});
        }
        found.erase("a.qal.new");
        found.erase("a.txt.new");
        EXPECT_THAT(found, AnyOf(before, newNote, kNew));
        EXPECT_TRUE(Download());
        EXPECT_EQ(Found(), kNew);
      };
      EXPECT_GE(EachFault(
                    fault, [&] { Prepare(before); }, [this] { Download(); }, check),
                12);
    }
  }
}

TEST_F(PackagesTest, RemovalLeavesTheListTrue) {
  const Box unable[] = {{"Unable to delete the file a.qal\r\nNo space left on device"},
                        {"Unable to delete the file a.txt\r\nNo space left on device"}};
  for (const Fault fault : {Fault::Fail, Fault::Kill}) {
    const auto check = [&] {
      const Files left = Found();
      EXPECT_THAT(left, AnyOf(kOld, kOldNote, Files{}));
      if (fault == Fault::Fail) {
        EXPECT_EQ(entry.Local, left.contains("a.qal"));
        EXPECT_EQ(user.boxes, left.empty() ? std::vector<Box>{} : std::vector{unable[left != kOld]});
      }
      entry.Local = true;
      EXPECT_EQ(RemovePackage(home, entry), left.contains("a.qal"));
      EXPECT_FALSE(Found().contains("a.qal"));
    };
    EXPECT_GE(EachFault(
                  fault, [this] { Prepare(kOld); }, [this] { RemovePackage(home, entry); }, check),
              3);
  }
}

}  // namespace
}  // namespace tarnwick::test
