// The window's design: one table of all controls, which every front end walks.
#include "ui/layout.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace {

constexpr int twips_per_inch = 1440;

constexpr Font window = {"MS Sans Serif", 8.25};
constexpr Font window_bold = {"MS Sans Serif", 8.25, true};
constexpr Font narrow = {"Arial Narrow", 8.25};
constexpr Font exit_font = {"MS Sans Serif", 18, true};
constexpr Font heading = {"MS Sans Serif", 9.75, true};
constexpr Font big = {"MS Sans Serif", 13.5, true};
constexpr Font big_italic = {"MS Sans Serif", 13.5, true, true};

constexpr ControlLayout info_label(const char* name, const char* caption, int left, int top,
                                   int width) {
  return {name, Kind::label, caption, left, top, width, 195, window, Align::left, true, true, true};
}

constexpr bool disabled = false;
constexpr bool hidden = false;

// What stands below this line is in one of three columns, which widen with the window.
constexpr int columns_top = 1440;
constexpr int columns = 3;

constexpr char found_heading[] = "found galaxy files";
constexpr char fixed_heading[] = "fixed galaxy files";

constexpr ControlLayout table[] = {
    {"Drive1", Kind::drive_list, "", 120, 1560, 3855, 315, window},
    {"File1", Kind::file_list, "", 120, 3840, 3855, 3405, window},
    {"Dir1", Kind::directory_list, "", 120, 1920, 3855, 1890, window},
    {"Command1", Kind::button, "find galaxies", 120, 1200, 1335, 255, window_bold},
    {"Command2", Kind::button, "fix found galaxies", 1440, 1200, 1815, 255, window_bold},
    {"Command3", Kind::button, "exit", 3240, 1080, 855, 375, exit_font},
    {"Command4", Kind::button, "program space galaxies", 120, 480, 3855, 255, narrow},
    {"Command5", Kind::button, "user space galaxies", 120, 720, 3855, 255, narrow},
    {"Text1", Kind::text_box, "", 4200, 1680, 2895, 5535, window},
    {"Label1", Kind::label, "stage ", 7200, 600, 855, 375, big},
    {"Label2", Kind::label, "Please wait processing", 6240, 120, 3855, 375, big_italic,
     Align::centre},
    {"Label3", Kind::label, "of 2", 8520, 600, 735, 375, big},
    {"Label4", Kind::label, "0", 5040, 1080, 615, 375, big, Align::right},
    {"Label5", Kind::label, "galaxies out of", 5760, 1080, 2175, 375, big},
    {"Label6", Kind::label, "0", 7800, 1080, 975, 375, big, Align::right},
    {"Label7", Kind::label, "updated", 8880, 1080, 1215, 375, big},
    {"Label8", Kind::label, "0", 8160, 600, 375, 375, big},
    {"Text2", Kind::text_box, "", 7200, 1680, 2895, 5535, window},
    {"Label9", Kind::label, found_heading, 4200, 1440, 2775, 255, heading, Align::centre},
    {"Label10", Kind::label, fixed_heading, 7200, 1440, 2895, 255, heading, Align::centre},
    info_label("Label11", "cpu", 120, 240, 270),
    info_label("Label12", "cpu ident", 120, 0, 660),
    info_label("Label13", "cpulevel", 1560, 240, 600),
    info_label("Label14", "cpurev", 2400, 240, 495),
    info_label("Label15", "winver", 4080, 720, 465),
    info_label("Label16", "winbits", 4080, 960, 480),
    info_label("Label17", "cores", 840, 240, 390),
    info_label("Label18", "os", 4080, 480, 165),
    {"Label19", Kind::label, "silent mode the buttons do not work", 4920, 600, 1695, 375, window,
     Align::centre, true, hidden},
    {"Command6", Kind::button, "vora/zendrel", 120, 960, 1815, 255, window, Align::left, disabled},
    {"Command7", Kind::button, "tarnfall", 1920, 960, 1335, 255, window, Align::left, disabled},
};

// What a screen reader calls the controls whose text or caption does not say what they are.
constexpr std::pair<std::string_view, const char*> accessible_names[] = {
    {"Drive1", "drive"},      {"File1", "files of the folder"},
    {"Dir1", "folders"},      {"Text1", found_heading},
    {"Text2", fixed_heading}, {"Label1", "progress"},
    {"Label3", "progress"},   {"Label4", "galaxies updated, counted from 0"},
    {"Label5", "progress"},   {"Label6", "galaxies found, counted from 0"},
    {"Label7", "progress"},   {"Label8", "stage"},
};

int to_twips(int pixels, double dpi) {
  return static_cast<int>(std::lround(pixels * twips_per_inch / dpi));
}

Place place_in_twips(const ControlLayout& row, int client_width, int client_height) {
  Place place = {row.left, row.top, row.width, row.height};
  if (row.top < columns_top)
    return place;
  const int share = std::max(0, client_width - window_width) / columns;
  place.left += row.left * columns / window_width * share;
  place.width += share;
  if (row.kind == Kind::file_list || row.kind == Kind::text_box)
    place.height = std::max(0, place.height + client_height - window_height);
  return place;
}

bool overlaps_vertically(const ControlLayout& one, const ControlLayout& other) {
  return other.top < one.top + one.height && one.top < other.top + other.height;
}

// From a label's left edge almost to that of the next visible control on its right.
int width_to_neighbour(const ControlLayout& row, const Form1& form) {
  constexpr int gap = 45;
  int right = window_width;
  for (const ControlLayout& other : table)
    if (other.left > row.left && overlaps_vertically(row, other) &&
        control_of(other, form).visible())
      right = std::min(right, other.left);
  return right - gap - row.left;
}

// The dots per inch at which the design is laid out in a client area of this width: those of the
// screen, or fewer where the client area is narrower than the design.
double design_dpi(int client_width, int screen_dpi) {
  const int width = std::max(client_width, pixels(smallest_width, screen_dpi));
  if (width >= pixels(window_width, screen_dpi))
    return screen_dpi;
  return double(width) * twips_per_inch / window_width;
}

Room caption_room_in_twips(const ControlLayout& row, const Form1& form) {
  constexpr int frame_width = 90;  // of a button, both sides together
  constexpr int frame_height = 30;
  if (row.sized_to_text)
    return {width_to_neighbour(row, form), window_height - row.top, false};
  if (row.kind == Kind::button)
    return {row.width - frame_width, row.height - frame_height, false};
  return {row.width, row.height, true};
}

}  // namespace

std::span<const ControlLayout> layout() { return table; }

Control& control_of(const ControlLayout& row, const Form1& form) {
  return **std::find_if(form.controls().begin(), form.controls().end(),
                        [&](const Control* control) { return control->name() == row.name; });
}

void apply_layout(Form1& form) {
  form.set_caption(window_caption);
  for (const ControlLayout& row : table) {
    Control& control = control_of(row, form);
    control.set_text(row.caption);
    control.set_enabled(row.enabled);
    control.set_visible(row.visible);
  }
}

std::string accessible_name(const ControlLayout& row, const Form1& form) {
  const auto named = std::find_if(std::begin(accessible_names), std::end(accessible_names),
                                  [&](const auto& name) { return name.first == row.name; });
  if (named == std::end(accessible_names))
    return "";
  const bool with_text = row.kind == Kind::label || row.kind == Kind::drive_list;
  return named->second + (with_text ? ": " + control_of(row, form).text() : "");
}

int pixels(int twips, double dpi) {
  return static_cast<int>(std::lround(twips * dpi / twips_per_inch));
}

Extent message_field(Extent text, Extent work_area, int line) {
  constexpr Extent margin{3, 2}, around{4, 8}, most{message_width + margin.width, 24};
  const auto fit = [line](int wanted, int added, int room, int taken, int largest) {
    return std::min({wanted + added * line, room - taken * line, largest * line});
  };
  return {fit(text.width, margin.width, work_area.width, around.width, most.width),
          fit(text.height, margin.height, work_area.height, around.height, most.height)};
}

// Rounds the corners, not the sizes, so that edges stay aligned at any resolution.
Place place_of(const ControlLayout& row, int client_width, int client_height, int screen_dpi) {
  const double dpi = design_dpi(client_width, screen_dpi);
  const Place place =
      place_in_twips(row, to_twips(client_width, dpi), to_twips(client_height, dpi));
  const int left = pixels(place.left, dpi);
  const int top = pixels(place.top, dpi);
  return {left, top, pixels(place.left + place.width, dpi) - left,
          pixels(place.top + place.height, dpi) - top};
}

Room caption_room(const ControlLayout& row, const Form1& form, int client_width, int screen_dpi) {
  const double dpi = design_dpi(client_width, screen_dpi);
  const Room room = caption_room_in_twips(row, form);
  return {pixels(room.width, dpi), pixels(room.height, dpi), room.wraps};
}

Lettering fit_lettering(double points, const std::function<bool(const Lettering&)>& fits) {
  constexpr Lettering easy_to_read = {6.5, 75};
  constexpr Lettering smallest = {4, 60};
  constexpr double step = 0.25;
  for (const Lettering& least : {easy_to_read, smallest})
    for (Lettering tried = {points}; tried.points >= least.points; tried.points -= step)
      for (tried.stretch = 100; tried.stretch >= least.stretch; tried.stretch -= 5)
        if (fits(tried))
          return tried;
  return smallest;
}
