// Keeps Enter and Space from pressing what the user has not seen yet.
#pragma once

#include <QWidget>

// From now on, for as long as `window` lives, a key that repeats because it is held down presses
// nothing; it goes on writing in text boxes.
void guard_keys(QWidget* window);

// What the keys press has just changed: for the time of a double click they press nothing.
void pause_keys();
