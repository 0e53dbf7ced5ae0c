// The window's design: where its controls are, and how their captions are lettered.
#include "ui/layout.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

const ControlLayout& row_of(const std::string& name) {
  return *std::ranges::find(layout(), name, &ControlLayout::name);
}

}  // namespace

TEST(Layout, EdgesAlignAtAnyResolution) {
  for (int dpi = 96; dpi < 200; ++dpi) {
    const Place upper = place_of(row_of("Command7"), 0, 0, dpi);
    const Place lower = place_of(row_of("Command2"), 0, 0, dpi);
    EXPECT_EQ(upper.left + upper.width, lower.left + lower.width) << dpi;
  }
}

TEST(Layout, ColumnsAndListsGrowWithTheWindow) {
  const struct {
    const char* name;
    int width, height;          // pixels beyond the design's client area, of 681 by 496
    std::array<int, 4> growth;  // of left, top, width and height
  } cases[] = {
      {"File1", 30, 20, {0, 0, 10, 20}},
      {"Dir1", 30, 20, {0, 0, 10, 0}},
      {"Text1", 30, 20, {10, 0, 10, 20}},
      {"Text2", 30, 20, {20, 0, 10, 20}},
      {"Label10", 30, 20, {20, 0, 10, 0}},
      {"Command3", 30, 20, {0, 0, 0, 0}},
      {"Dir1", 0, -60, {0, 0, 0, 0}},
      {"File1", 0, -60, {0, 0, 0, -60}},
      {"Text1", 0, -496, {0, 0, 0, -369}},
      {"Text2", -61, 0, {-43, -10, -17, 11}},  // 620 pixels are the smallest width
      {"Text2", -681, 0, {-43, -10, -17, 11}},
      {"Command3", -61, 0, {-19, -6, -5, -3}},
  };
  for (const auto& c : cases) {
    const Place was = place_of(row_of(c.name), 681, 496, 96);
    const Place now = place_of(row_of(c.name), 681 + c.width, 496 + c.height, 96);
    EXPECT_EQ((std::array{now.left - was.left, now.top - was.top, now.width - was.width,
                          now.height - was.height}),
              c.growth)
        << c.name;
  }
}

TEST(Layout, ACaptionHasRoom) {
  const TestMachine machine;
  Program program(machine);
  apply_layout(program.form);
  const auto check = [&](const char* name, int width, int height, bool wraps) {
    const Room room = caption_room(row_of(name), program.form, 681, 96);
    EXPECT_EQ(room.width, width) << name;
    EXPECT_EQ(room.height, height) << name;
    EXPECT_EQ(room.wraps, wraps) << name;
  };
  check("Command3", 51, 23, false);
  check("Label2", 257, 25, true);
  check("Label11", 45, 480, false);   // up to Label17
  check("Label18", 141, 464, false);  // up to Label2
  program.form.Label19.set_visible(true);
  check("Label18", 53, 464, false);
}

TEST(Layout, LettersAreNarrowerAndSmallerByAsLittleAsWillDo) {
  const struct {
    double room;  // in which letters of 10 points are 100 wide
    double points;
    int stretch;
  } cases[] = {{100, 10, 100}, {90, 10, 90}, {74, 9.75, 75}, {55, 7.25, 75},
               {45, 7.5, 60},  {30, 5, 60},  {1, 4, 60}};
  for (const auto& c : cases) {
    const Lettering found = fit_lettering(
        10, [&](const Lettering& tried) { return tried.points / 10 * tried.stretch <= c.room; });
    EXPECT_EQ(found.points, c.points) << c.room;
    EXPECT_EQ(found.stretch, c.stretch) << c.room;
  }
}
