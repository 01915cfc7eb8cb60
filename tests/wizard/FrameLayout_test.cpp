#include "wizard/FrameLayout.h"

#include <gtest/gtest.h>

#include <array>

namespace tarnwick {
namespace {

struct LayoutCase {
  const char* name;
  FrameSize page;
  FrameRect picPage;
  std::int32_t bevelRight, bevelTop;
  std::int32_t back, fwd, terminate, row;  ///< Left edges of the three right buttons, top of the row.
  FrameSize client;
};

TEST(FrameLayout, FitsRoundEachPageAndIsNeverNarrowerThanTheButtons) {
  const FrameSize splash{120, 226};
  const FrameSize button{80, 23};
  const LayoutCase cases[] = {
      {"first pages", {299, 182}, {130, 2, 301, 184}, 434, 236, 181, 263, 353, 244, {439, 275}},
      {"last pages", {464, 181}, {130, 2, 466, 183}, 599, 236, 346, 428, 518, 244, {604, 275}},
      {"narrower than the row", {40, 30}, {130, 2, 42, 32}, 273, 236, 20, 102, 192, 244, {278, 275}},
      {"as wide as the row", {138, 30}, {130, 2, 140, 32}, 273, 236, 20, 102, 192, 244, {278, 275}},
      {"taller than the splash", {299, 400}, {130, 2, 301, 402}, 434, 410, 181, 263, 353, 418, {439, 449}},
  };
  for (const LayoutCase& c : cases) {
    SCOPED_TRACE(c.name);
    const FrameLayout layout = LayOut(splash, button, c.page);
    const auto edges = [](const FrameRect& r) { return std::array{r.left, r.top, r.width, r.height}; };
    EXPECT_EQ(edges(layout.picSplash), (std::array{4, 4, 120, 226}));
    EXPECT_EQ(edges(layout.picPage), edges(c.picPage));
    EXPECT_EQ(layout.bevelLeft, 4);
    EXPECT_EQ(layout.bevelRight, c.bevelRight);
    EXPECT_EQ(layout.bevelTop, c.bevelTop);
    EXPECT_EQ(edges(layout.cmdHelp), (std::array{4, c.row, 80, 23}));
    EXPECT_EQ(edges(layout.cmdStepBack), (std::array{c.back, c.row, 80, 23}));
    EXPECT_EQ(edges(layout.cmdStepFwd), (std::array{c.fwd, c.row, 80, 23}));
    EXPECT_EQ(edges(layout.cmdTerminate), (std::array{c.terminate, c.row, 80, 23}));
    EXPECT_EQ(layout.client.width, c.client.width);
    EXPECT_EQ(layout.client.height, c.client.height);
  }
}

}  // namespace
}  // namespace tarnwick
