// The search for maps below the two roots.
#include "discover/search.h"

#include "platform/path_rules.h"

namespace {

// A folder in the middle of the walk.
struct Folder {
  std::string path;  // without "\" at its end
  std::vector<Entry> entries{};
  std::size_t next = 0;  // the first entry that was not examined for a subfolder to walk
};

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

// Walks a tree depth first, with a stack of its own: an untrusted tree may be very deep.
void walk(Form1& form, const std::string& pattern, const std::string& top,
          std::vector<std::string>& list) {
  std::vector<Folder> open;
  open.push_back(list_folder(form, top, pattern));
  while (!open.empty()) {
    if (form.system.interrupted())
      end_interrupted(form, 0);
    Folder& folder = open.back();
    if (folder.next == folder.entries.size()) {
      for (const Entry& entry : folder.entries)
        if (!entry.folder && !entry.link)
          list.insert(list.end() - 1, folder.path + "\\" + entry.name);
      open.pop_back();
    } else if (const Entry& entry = folder.entries[folder.next++]; entry.folder && !entry.link) {
      form.screen.process_messages();
      open.push_back(list_folder(form, folder.path + "\\" + entry.name, pattern));
    }
  }
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
  const bool is_drive_root = top->ends_with('\\');
  walk(form, pattern, top->substr(0, top->size() - is_drive_root), list);
  // The lists show the parent; a drive root is its own. Files may have come or gone where they are
  // already. When the parent cannot be shown they stay as they are.
  const std::string before = form.Dir1.path();
  if (form.Dir1.set_path(top->substr(0, afterlast(*top, '\\') - 1)) && form.Dir1.path() == before)
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
