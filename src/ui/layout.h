// The window's design: one table of all controls, which every front end walks.
#pragma once

#include "form/form1.h"

#include <functional>
#include <span>

// The table is in twips: 1,440 to the inch, 15 to a pixel at 96 dots per inch. What the functions
// below take and return is in pixels.
inline constexpr char window_caption[] = "brindle's vora & Tarnfall map updater";
inline constexpr int window_width = 10215;  // of the client area
inline constexpr int window_height = 7440;

// The smallest client area: with its frame the window fits a screen of 1280 by 800 pixels on which
// everything is twice as large.
inline constexpr int smallest_width = 9300;
inline constexpr int smallest_height = 4800;

enum class Kind { drive_list, file_list, directory_list, button, text_box, label };
enum class Align { left, centre, right };

struct Font {
  const char* name;
  double points;
  bool bold = false;
  bool italic = false;
};

struct ControlLayout {
  const char* name;
  Kind kind;
  const char* caption;
  int left, top, width, height;  // from the client area's top left corner
  Font font;
  Align align = Align::left;
  bool enabled = true;
  bool visible = true;
  bool sized_to_text = false;  // a label that is as wide as its caption

  // Whether it shows a caption, which gets smaller letters where it does not fit.
  constexpr bool has_caption() const { return kind == Kind::button || kind == Kind::label; }
};

// All controls in keyboard focus order; labels take no focus.
std::span<const ControlLayout> layout();

// The form's control that a row describes.
Control& control_of(const ControlLayout& row, const Form1& form);

// Gives the form's caption and its controls their initial state.
void apply_layout(Form1& form);

// What a screen reader calls a control, its text included if it is a label or a drive list. Empty
// when the caption says what the control is.
std::string accessible_name(const ControlLayout& row, const Form1& form);

// The pixels of a length in twips at `dpi` dots per inch, rounded to the nearest.
int pixels(int twips, double dpi);

struct Extent {
  int width, height;
};

// The text of a message box is wrapped at this width, in line heights.
inline constexpr int message_width = 37;

// The size of the field that shows the text of a message box: as large as the text, and room for a
// scroll bar, but so small that the box fits the work area. What is longer scrolls. `line` is the
// height of a line.
Extent message_field(Extent text, Extent work_area, int line);

struct Place {
  int left, top, width, height;
};

// Where a control belongs in a client area of this size. The three columns share the width beyond
// the design's; all controls shrink where it is less. The file list and the text boxes take the
// height beyond the design's, and shrink where it is less.
Place place_of(const ControlLayout& row, int client_width, int client_height, int screen_dpi);

// The room for the caption of a button or label.
struct Room {
  int width, height;
  bool wraps;  // the caption may be broken into lines
};

// A button's frame takes some of its size. A label sized to its text may reach to its right-hand
// neighbour that is visible on the form, and may be taller than the design's.
Room caption_room(const ControlLayout& row, const Form1& form, int client_width, int screen_dpi);

// The size and the width of a caption's letters.
struct Lettering {
  double points;
  int stretch = 100;  // percent of the font's own width
};

// The lettering closest to the font's own `points` for which `fits` returns true. It prefers narrow
// letters to small ones, and tries what is hard to read last; returns the smallest lettering of all
// when none fits.
Lettering fit_lettering(double points, const std::function<bool(const Lettering&)>& fits);
