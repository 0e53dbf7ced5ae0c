// The window's design: one table of all controls, which every front end walks.
#pragma once

#include "form/form1.h"

#include <functional>
#include <span>

// Positions and sizes are in twips: 1,440 to the inch, 15 to a pixel at 96 dots per inch.
inline constexpr int twips_per_inch = 1440;

inline constexpr char window_caption[] = "brindle's vora & Tarnfall map updater";
inline constexpr int window_width = 10215;  // of the client area
inline constexpr int window_height = 7440;

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
  int column = 0;              // 1 to 3 from the left: what widens with the window; 0: all else
  const char* holds = "";      // what assistive tools call a control without a caption
};

struct Place {
  int left, top, width, height;
};

// All controls in keyboard focus order; labels take no focus.
std::span<const ControlLayout> layout();

// Where a control is while the client area has this size. The three columns share the width beyond
// the design's; the file list and the text boxes take the height beyond it, and give what a small
// screen lacks.
Place place_of(const ControlLayout& row, int client_width, int client_height);

// How wide a label sized to its text can be, in twips, before it meets the right-hand neighbour
// that is visible on the form.
int room_of(const ControlLayout& row, const Form1& form);

// How a caption is lettered: in points, and the letters' width in hundredths of their own.
struct Lettering {
  double points;
  int stretch = 100;
};

// The lettering in which a caption of so many points `fits`: narrower and smaller by as little as
// will do, and easy to read if it can be. The smallest of all where none fits.
Lettering fit_lettering(double points, const std::function<bool(const Lettering&)>& fits);

// Gives the form's controls and its window their initial state.
void apply_layout(Form1& form);
