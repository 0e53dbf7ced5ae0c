// The window's design: one table of all controls, which every front end walks.
#pragma once

#include "form/form1.h"

#include <span>

// Positions and sizes are in twips: 1,440 to the inch, 15 to a pixel at 96 dots per inch.
inline constexpr int twipsperinch = 1440;

inline constexpr char windowcaption[] = "brindle's vora & Tarnfall map updater";
inline constexpr int windowwidth = 10215;  // of the client area
inline constexpr int windowheight = 7440;

enum class Kind { drivelist, filelist, directorylist, button, textbox, label };
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
  bool sizedtotext = false;  // a label that is as wide as its caption
};

// All controls in keyboard focus order; labels take no focus.
std::span<const ControlLayout> layout();

// Gives the form's controls and its window their initial state.
void applylayout(Form1& form);
