// The window's design: where its controls are, and how their captions are lettered.
#include "ui/layout.h"

#include "tests/support/test_machine.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

const ControlLayout& row_of(const std::string& name) {
  return *std::find_if(layout().begin(), layout().end(),
                       [&](const ControlLayout& row) { return row.name == name; });
}

}  // namespace

TEST(Layout, ListsGiveTheHeightThatASmallScreenLacks) {
  for (const char* name : {"File1", "Text1", "Text2"}) {
    const ControlLayout& row = row_of(name);
    EXPECT_EQ(place_of(row, window_width, window_height - 900).height, row.height - 900) << name;
    EXPECT_EQ(place_of(row, window_width, 0).height, 0) << name;
    EXPECT_EQ(place_of(row, window_width - 900, window_height).width, row.width) << name;
  }
  const ControlLayout& folders = row_of("Dir1");
  EXPECT_EQ(place_of(folders, window_width, window_height - 900).height, folders.height);
}

TEST(Layout, ALabelHasRoomUpToItsVisibleNeighbour) {
  const TestMachine machine;
  Program program(machine);
  apply_layout(program.form);
  EXPECT_EQ(room_of(row_of("Label11"), program.form), 720);
  EXPECT_EQ(room_of(row_of("Label18"), program.form), 2160);
  program.form.Label19.set_visible(true);
  EXPECT_EQ(room_of(row_of("Label18"), program.form), 840);
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
