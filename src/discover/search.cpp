// The search for maps below the two roots.
#include "discover/search.h"

#include "platform/path_rules.h"

namespace {

// A folder in the middle of the walk.
struct Folder {
  std::string path;  // without "\" at its end
  std::vector<Entry> entries{};
  std::size_t next = 0;  // the first entry after the subfolder that was walked last
};

std::string without_backslash(std::string path) {
  if (path.ends_with('\\'))
    path.pop_back();
  return path;
}

// Remembers a folder that exists and cannot be searched. Without a root a whole drive is searched,
// where there are always such folders.
void add_unsearched(Form1& form, const Failure& failure) {
  if (!failure.missing() && !form.rootpath.empty())
    form.unsearched.push_back(failure);
}

Folder list_folder(Form1& form, std::string path, const std::string& pattern) {
  Folder folder{std::move(path)};
  auto entries = form.files.list(folder.path + "\\", pattern);
  if (entries)
    folder.entries = *std::move(entries);
  else
    add_unsearched(form, entries.failure());
  return folder;
}

// The next subfolder to walk, null when there is none.
const Entry* next_subfolder(Folder& folder) {
  while (folder.next < folder.entries.size())
    if (const Entry& entry = folder.entries[folder.next++]; entry.folder && !entry.link)
      return &entry;
  return nullptr;
}

void add_files(const Folder& folder, std::vector<std::string>& list) {
  for (const Entry& entry : folder.entries)
    if (!entry.folder && !entry.link)
      list.insert(list.end() - 1, folder.path + "\\" + entry.name);
}

// Walks a tree depth first, with a stack of its own: an untrusted tree may be very deep.
void walk(Form1& form, const std::string& pattern, const std::string& top,
          std::vector<std::string>& list) {
  std::vector<Folder> open;
  open.push_back(list_folder(form, top, pattern));
  while (!open.empty()) {
    if (form.system.interrupted())
      end_interrupted(form, 0);
    if (const Entry* below = next_subfolder(open.back())) {
      form.screen.process_messages();
      open.push_back(list_folder(form, open.back().path + "\\" + below->name, pattern));
      continue;
    }
    add_files(open.back(), list);
    open.pop_back();
  }
}

// The parent of `folder`; a drive root is its own parent.
std::string parent_folder(const std::string& folder) {
  return folder.substr(0, afterlast(folder, '\\') - 1);
}

// Fills `foundlist` with the maps below both roots.
void search_roots(Form1& form) {
  const DeferredInterrupts deferred(form.system);
  const BusyPointer busy(form.screen);
  form.searching = true;
  form.filepattern = "*.galaxy";
  form.foundlist = {""};
  form.unsearched.clear();
  for (const std::string& root : form.pathlist) {
    form.rootpath = root;
    findfiles(form, form.filepattern, root, form.foundlist);
  }
  form.searching = false;
}

}  // namespace

void findfiles(Form1& form, const std::string& pattern, const std::string& root,
               std::vector<std::string>& list) {
  const auto top = form.files.full_path(root.ends_with('\\') ? root : root + "\\");
  if (!top)
    return add_unsearched(form, top.failure());
  walk(form, pattern, without_backslash(*top), list);
  // Files may have come or gone where the lists are already. When the parent cannot be shown they
  // stay as they are.
  const std::string before = form.Dir1.path();
  if (form.Dir1.set_path(parent_folder(*top)) && form.Dir1.path() == before)
    form.File1.set_path(before);
}

void findgalaxies(Form1& form) {
  search_roots(form);
  next_stage(form);
  for (std::size_t j = 0; j + 1 < form.foundlist.size(); ++j)
    form.Text1.append(std::string(filename(form.foundlist[j])) + "\r\n");
  form.Label6.set_text(std::to_string(static_cast<long long>(form.foundlist.size()) - 2));
  report_troubles(
      form, "1 folder could not be searched:", "folders could not be searched:", form.unsearched);
}
