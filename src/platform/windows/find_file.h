// The entries of folders.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include <windows.h>

// The entry that a path without wildcards names; nullopt when there is none, with the reason in the
// last error.
std::optional<WIN32_FIND_DATAW> find_file(const std::wstring& path);

// Calls `visit` with each entry of a folder, "." and ".." left out. False, with the last error set,
// when the folder cannot be read to its end.
bool for_each_entry(const std::wstring& folder,
                    const std::function<void(const WIN32_FIND_DATAW&)>& visit);

// Whether an entry is a symlink or a junction. A file whose content is fetched from elsewhere when
// it is read is neither.
bool is_link(const WIN32_FIND_DATAW& entry);
