// The search for maps below the two roots.
#pragma once

#include "form/form1.h"

#include <string>

// Fills `foundlist` with the maps below both roots, lists their names in `Text1`, shows their
// number, less one, in `Label6`, and tells which folders could not be searched.
void findgalaxies(Form1& form);

// Adds the files below `root` whose names match `pattern` to `list`: for each folder first what
// lies below its subfolders, then its own files. Hidden names are left out and links are not
// followed; a folder that cannot be listed adds nothing, and is remembered in `notsearched` unless
// a whole drive is searched. The directory list ends up at the root's parent folder.
void findfiles(Form1& form, const std::string& pattern, const std::string& root, FoundList& list);
