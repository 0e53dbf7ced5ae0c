// The window's design: one table of all controls, which every front end walks.
#include "ui/layout.h"

#include <algorithm>

namespace {

constexpr Font window = {"MS Sans Serif", 8.25};
constexpr Font windowbold = {"MS Sans Serif", 8.25, true};
constexpr Font narrow = {"Arial Narrow", 8.25};
constexpr Font exitfont = {"MS Sans Serif", 18, true};
constexpr Font heading = {"MS Sans Serif", 9.75, true};
constexpr Font big = {"MS Sans Serif", 13.5, true};
constexpr Font bigitalic = {"MS Sans Serif", 13.5, true, true};

constexpr ControlLayout infolabel(const char* name, const char* caption, int left, int top,
                                  int width) {
  return {name, Kind::label, caption, left, top, width, 195, window, Align::left, true, true, true};
}

constexpr ControlLayout incolumn(int column, ControlLayout row, const char* holds = "") {
  row.column = column;
  row.holds = holds;
  return row;
}

constexpr bool disabled = false;
constexpr bool hidden = false;

constexpr int columns = 3;
constexpr char foundheading[] = "found galaxy files";
constexpr char fixedheading[] = "fixed galaxy files";

constexpr ControlLayout table[] = {
    incolumn(1, {"Drive1", Kind::drivelist, "", 120, 1560, 3855, 315, window}, "drives"),
    incolumn(1, {"File1", Kind::filelist, "", 120, 3840, 3855, 3405, window},
             "files of the folder"),
    incolumn(1, {"Dir1", Kind::directorylist, "", 120, 1920, 3855, 1890, window}, "folders"),
    {"Command1", Kind::button, "find galaxies", 120, 1200, 1335, 255, windowbold},
    {"Command2", Kind::button, "fix found galaxies", 1440, 1200, 1815, 255, windowbold},
    {"Command3", Kind::button, "exit", 3240, 1080, 855, 375, exitfont},
    {"Command4", Kind::button, "program space galaxies", 120, 480, 3855, 255, narrow},
    {"Command5", Kind::button, "user space galaxies", 120, 720, 3855, 255, narrow},
    incolumn(2, {"Text1", Kind::textbox, "", 4200, 1680, 2895, 5535, window}, foundheading),
    {"Label1", Kind::label, "stage ", 7200, 600, 855, 375, big},
    {"Label2", Kind::label, "Please wait processing", 6240, 120, 3855, 375, bigitalic,
     Align::centre},
    {"Label3", Kind::label, "of 2", 8520, 600, 735, 375, big},
    {"Label4", Kind::label, "0", 5040, 1080, 615, 375, big, Align::right},
    {"Label5", Kind::label, "galaxies out of", 5760, 1080, 2175, 375, big},
    {"Label6", Kind::label, "0", 7800, 1080, 975, 375, big, Align::right},
    {"Label7", Kind::label, "updated", 8880, 1080, 1215, 375, big},
    {"Label8", Kind::label, "0", 8160, 600, 375, 375, big},
    incolumn(3, {"Text2", Kind::textbox, "", 7200, 1680, 2895, 5535, window}, fixedheading),
    incolumn(2,
             {"Label9", Kind::label, foundheading, 4200, 1440, 2775, 255, heading, Align::centre}),
    incolumn(3,
             {"Label10", Kind::label, fixedheading, 7200, 1440, 2895, 255, heading, Align::centre}),
    infolabel("Label11", "cpu", 120, 240, 270),
    infolabel("Label12", "cpu ident", 120, 0, 660),
    infolabel("Label13", "cpulevel", 1560, 240, 600),
    infolabel("Label14", "cpurev", 2400, 240, 495),
    infolabel("Label15", "winver", 4080, 720, 465),
    infolabel("Label16", "winbits", 4080, 960, 480),
    infolabel("Label17", "cores", 840, 240, 390),
    infolabel("Label18", "os", 4080, 480, 165),
    {"Label19", Kind::label, "silent mode the buttons do not work", 4920, 600, 1695, 375, window,
     Align::centre, true, hidden},
    {"Command6", Kind::button, "vora/zendrel", 120, 960, 1815, 255, window, Align::left, disabled},
    {"Command7", Kind::button, "tarnfall", 1920, 960, 1335, 255, window, Align::left, disabled},
};

const ControlLayout& layoutof(const Control& control) {
  return *std::find_if(std::begin(table), std::end(table),
                       [&](const ControlLayout& row) { return control.name() == row.name; });
}

}  // namespace

std::span<const ControlLayout> layout() { return table; }

Place placeof(const ControlLayout& row, int clientwidth, int clientheight) {
  Place place = {row.left, row.top, row.width, row.height};
  if (row.column == 0)
    return place;
  const int share = std::max(0, clientwidth - windowwidth) / columns;
  place.left += (row.column - 1) * share;
  place.width += share;
  if (row.kind == Kind::filelist || row.kind == Kind::textbox)
    place.height = std::max(0, place.height + clientheight - windowheight);
  return place;
}

int roomof(const ControlLayout& row, const Form1& form) {
  int right = windowwidth;
  for (const Control* control : form.controls()) {
    const ControlLayout& other = layoutof(*control);
    if (control->visible() && other.left > row.left && other.top < row.top + row.height &&
        row.top < other.top + other.height)
      right = std::min(right, other.left);
  }
  return right - row.left;
}

Lettering fitlettering(double points, const std::function<bool(const Lettering&)>& fits) {
  constexpr Lettering easytoread = {6.5, 75};
  constexpr Lettering smallest = {4, 60};
  constexpr double step = 0.25;
  for (const Lettering& least : {easytoread, smallest})
    for (Lettering tried = {points}; tried.points >= least.points; tried.points -= step)
      for (tried.stretch = 100; tried.stretch >= least.stretch; tried.stretch -= 5)
        if (fits(tried))
          return tried;
  return smallest;
}

void applylayout(Form1& form) {
  form.setcaption(windowcaption);
  for (Control* control : form.controls()) {
    const ControlLayout& row = layoutof(*control);
    control->settext(row.caption);
    control->setenabled(row.enabled);
    control->setvisible(row.visible);
  }
}
