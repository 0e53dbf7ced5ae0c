// The game's editions, and what changes when one is selected.
#pragma once

#include "form/form1.h"

enum class Edition { base, expansion };

// Whether a base edition counts as registered, by its folder text, which ends in "\".
bool is_base_registered(const std::string& path);

// Takes the game's executables from `gamepath` from now on.
void set_versionfolder(Form1& form);

// Full path of the edition's executable.
std::string executable(const Form1& form, Edition edition);

// Reads the release of that executable into `foundversion`.
void read_release_of(Form1& form, Edition edition);

// Switches everything that depends on the edition. At start-up the directory list stays where it
// is, in debug mode the expansion gets no search roots, and the release that is read, for the
// diagnostic file of the expansion alone, is that of the base game's executable.
void select_edition(Form1& form, Edition edition, bool at_startup);

// Does what an edition's button does: selects the edition, and disables both edition buttons for
// good.
void selectedition(Form1& form, Edition edition);
