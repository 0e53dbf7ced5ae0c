// The game's editions, and what changes when one is selected.
#pragma once

#include "form/form1.h"

enum class Edition { base, expansion };

// Full name of the edition's executable in `versionfolder`.
std::string executable(const Form1& form, Edition edition);

// Sets `gamepath` to the installation folder of the edition: for the base edition the bundle's
// folder, else the base game's; it stays as it was when neither is registered.
void set_gamepath(Form1& form, Edition edition);

// Sets the edition letter and, for the expansion, `homefolder`.
void set_edition(Form1& form, Edition edition);

// A base edition's folder text must be longer than this to count as registered.
inline constexpr std::size_t base_path_threshold = 4;

// Sets `gamepath` and both search roots. With `fallback` the program's own folder becomes program
// space when no file is found at the user space root.
void set_folders(Form1& form, Edition edition, bool fallback);

// Shows the search roots as the tool tips of their buttons.
void show_roots(Form1& form);

// Switches everything that depends on the edition: what its button does. Both edition buttons stay
// disabled from then on.
void selectedition(Form1& form, Edition edition);
