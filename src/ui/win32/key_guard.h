// Keeps Enter and Space from pressing what the user has not seen yet, in the window and in its
// message boxes.
#pragma once

// From now on a key that repeats because it is held down presses nothing; it goes on writing in
// text boxes.
void guard_keys();

// What the keys press has just changed: for the time of a double click they press nothing.
void pause_keys();
