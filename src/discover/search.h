// The search for maps below the two roots.
#pragma once

#include "form/form1.h"

#include <string>

// Fills `foundlist` with the maps below both roots, lists their names in `Text1`, shows their
// number minus one in `Label6`, and reports the folders that could not be searched.
void findgalaxies(Form1& form);

// Adds the files below `root` whose names match `pattern` to `list`: for each folder first the
// files below its subfolders, then its own. Hidden entries are skipped and symlinks are not
// followed. A folder that cannot be listed is added to `unsearched` instead, unless a whole drive
// is searched. At the end the directory list shows the root's parent folder.
void findfiles(Form1& form, const std::string& pattern, const std::string& root,
               std::vector<std::string>& list);
