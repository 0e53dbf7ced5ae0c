// The window's design: where its controls are, and how their captions are lettered.
#include "ui/layout.h"

#include "tests/support/testmachine.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

const ControlLayout& rowof(const std::string& name) {
  return *std::find_if(layout().begin(), layout().end(),
                       [&](const ControlLayout& row) { return row.name == name; });
}

}  // namespace

TEST(Layout, ListsGiveTheHeightThatASmallScreenLacks) {
  for (const char* name : {"File1", "Text1", "Text2"}) {
    const ControlLayout& row = rowof(name);
    EXPECT_EQ(placeof(row, windowwidth, windowheight - 900).height, row.height - 900) << name;
    EXPECT_EQ(placeof(row, windowwidth, 0).height, 0) << name;
    EXPECT_EQ(placeof(row, windowwidth - 900, windowheight).width, row.width) << name;
  }
  const ControlLayout& folders = rowof("Dir1");
  EXPECT_EQ(placeof(folders, windowwidth, windowheight - 900).height, folders.height);
}

TEST(Layout, ALabelHasRoomUpToItsVisibleNeighbour) {
  const TestMachine machine;
  Program program(machine);
  applylayout(program.form);
  EXPECT_EQ(roomof(rowof("Label11"), program.form), 720);
  EXPECT_EQ(roomof(rowof("Label18"), program.form), 2160);
  program.form.Label19.setvisible(true);
  EXPECT_EQ(roomof(rowof("Label18"), program.form), 840);
}

TEST(Layout, LettersAreNarrowerAndSmallerByAsLittleAsWillDo) {
  const struct {
    double room;  // in which letters of 10 points are 100 wide
    double points;
    int stretch;
  } cases[] = {{100, 10, 100}, {90, 10, 90}, {74, 9.75, 75}, {55, 7.25, 75},
               {45, 7.5, 60},  {30, 5, 60},  {1, 4, 60}};
  for (const auto& c : cases) {
    const Lettering found = fitlettering(
        10, [&](const Lettering& tried) { return tried.points / 10 * tried.stretch <= c.room; });
    EXPECT_EQ(found.points, c.points) << c.room;
    EXPECT_EQ(found.stretch, c.stretch) << c.room;
  }
}
