// The game's editions, and what changes when one is selected.
#pragma once

#include "form/form1.h"

enum class Edition { base, expansion };

// Whether a base edition counts as registered, by its folder text, which ends in "\".
bool is_base_registered(const std::string& path);

// Takes the game's executables, and the folder that a mismatch names, from `gamepath` from now on,
// and writes it to the diagnostic file.
void set_versionfolder(Form1& form);

// Full path of the edition's executable.
std::string executable(const Form1& form, Edition edition);

// Reads the release of that executable into `foundversion`.
void read_release_of(Form1& form, Edition edition);

// Switches what depends on the edition when it is the only one. In debug mode the expansion gets no
// search roots.
void select_at_startup(Form1& form, Edition edition);

// Does what an edition's button does: switches everything that depends on the edition, and disables
// both edition buttons for good.
void selectedition(Form1& form, Edition edition);
