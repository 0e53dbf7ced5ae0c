// Looks at the entries of folders.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include <windows.h>

// The entry of a path's last name, which holds no wildcard. Nothing when there is none, the last
// error saying why.
std::optional<WIN32_FIND_DATAW> find_file(const std::wstring& path);

// Calls `visit` with each entry of a folder, "." and ".." left out. False, with the last error set,
// when the folder cannot be read to its end.
bool for_each_entry(const std::wstring& folder,
                    const std::function<void(const WIN32_FIND_DATAW&)>& visit);

// Whether an entry is another name's stand-in, a link or a junction. Files that are kept elsewhere
// and come when they are read are none.
bool is_link(const WIN32_FIND_DATAW& entry);
