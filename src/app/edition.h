// The game's editions, and what changes when one is selected.
#pragma once

#include "form/form1.h"

enum class Edition { base, expansion };

// Full path of the edition's executable in `versionfolder`.
std::string executable(const Form1& form, Edition edition);

// Sets `gamepath` to the installation folder of the edition: for the base edition the bundle's
// folder, else the base game's; unchanged when neither is registered.
void set_gamepath(Form1& form, Edition edition);

// Sets the edition letter and, for the expansion, `homefolder`.
void set_edition(Form1& form, Edition edition);

// Whether a base edition counts as registered, by its folder text, which ends in "\".
bool is_base_registered(const std::string& path);

// Sets `gamepath` and both search roots. With `fallback` the program's own folder becomes program
// space when there is no file at the user space root.
void set_folders(Form1& form, Edition edition, bool fallback);

// Shows the search roots as the tool tips of their buttons.
void show_roots(Form1& form);

// Does what an edition's button does: switches everything that depends on the edition, and disables
// both edition buttons for good.
void selectedition(Form1& form, Edition edition);
