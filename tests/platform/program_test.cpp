#include "platform/program.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/contain.h"
#include "platform/help.h"
#include "platform/ui.h"

namespace tarnwick {
namespace {

TEST(Program, KnowsItselfUntilToldOtherwise) {
  EXPECT_EQ(program::This().name, "platform_test");
  EXPECT_TRUE(std::filesystem::exists(program::This().folder / "platform_test"));
  program::Set({"/opt/mount", "Renamed", 2, 10, 0});
  EXPECT_EQ(program::Caption(), "Renamed  v2.10.0");
}

TEST(Program, EndsInItsReplacement) {
  int ends = 0;
  program::SetEnd([&] { ++ends; });
  program::End();
  EXPECT_EQ(ends, 1);
  program::SetEnd({});
  EXPECT_EXIT(program::End(), testing::ExitedWithCode(0), "");
}

TEST(Contain, DropsTheFailedActionOnly) {
  EXPECT_TRUE(Contain([] {}));
  EXPECT_FALSE(Contain([] { throw std::runtime_error("failed"); }));
  EXPECT_FALSE(Contain([] { throw 1; }));
}

TEST(User, WhoIsNotThereDeclines) {
  EXPECT_EQ(ui::MessageBox("?"), ui::Answer::Ok);
  EXPECT_EQ(ui::MessageBox("?", ui::Buttons::YesNo, ui::Icon::Question), ui::Answer::No);
  EXPECT_EQ(ui::MessageBox("?", ui::Buttons::RetryCancel, ui::Icon::Critical), ui::Answer::Cancel);
  EXPECT_EQ(ui::InputBox("?", "title", "2"), "");
  help::Show("/opt/mount/help", "Step1.htm");
}

}  // namespace
}  // namespace tarnwick
