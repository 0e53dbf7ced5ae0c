// The controls of the form as plain values: a setter changes the value and tells the screen.
#pragma once

#include "form/screen.h"
#include "platform/files.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class Control;

// What the controls of one window share: its screen, and the list of them all.
struct Window {
  Screen& screen;
  std::vector<Control*> controls;
};

class Control {
public:
  Control(Window& window, std::string itsname)
      : screen(window.screen), ownname(std::move(itsname)) {
    window.controls.push_back(this);
  }
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  const std::string& name() const { return ownname; }

  // A button's or label's caption, a text box's text, a list's drive or folder.
  const std::string& text() const { return owntext; }
  bool enabled() const { return isenabled; }
  bool visible() const { return isvisible; }
  const std::string& tooltip() const { return owntooltip; }

  void settext(std::string newtext);
  void setenabled(bool on);
  void setvisible(bool on);
  void settooltip(std::string newtooltip);

  // Adds to the end of a text box's text.
  void append(std::string_view more);

  // Takes over what the user has typed into a text box; the screen shows it already.
  void typed(std::string newtext) { owntext = std::move(newtext); }

protected:
  Screen& screen;
  std::string owntext;

private:
  const std::string ownname;
  std::string owntooltip;
  bool isenabled = true;
  bool isvisible = true;
};

// The list of the machine's drives; its text is the selected one, a letter and a colon.
class DriveList : public Control {
public:
  using Control::Control;

  const std::vector<std::string>& drives() const { return owndrives; }

  // Fills the list and selects one drive; no event.
  void fill(std::vector<std::string> letters, std::string selected);

  // The user selects another drive: fires `changed`.
  void select(std::string drive);

  std::function<void()> changed;

private:
  std::vector<std::string> owndrives;
};

// A row of the directory list.
struct FolderRow {
  std::string name;   // a drive root's is its path
  std::string path;   // what opening the row points the list at
  std::size_t depth;  // 0 for the drive root
};

// The list that shows a folder with its subfolders; its text is the folder's path.
class DirectoryList : public Control {
public:
  DirectoryList(Window& window, std::string itsname, Files& machine)
      : Control(window, std::move(itsname)), files(machine) {}

  // The folder that it shows, without "\" at the end except for a drive root.
  const std::string& path() const { return text(); }

  // The names of the folder's subfolders in ascending order.
  const std::vector<std::string>& subfolders() const { return ownsubfolders; }

  // What the list shows: the folders from the drive root down to its own, then the subfolders.
  std::vector<FolderRow> rows() const;

  // Points the list at a folder. Fires `changed` when that is another one than before. A folder
  // that cannot be shown leaves the list as it is.
  Result<Done> setpath(const std::string& folder);

  std::function<void()> changed;

private:
  Files& files;
  std::vector<std::string> ownsubfolders;
};

// The list of a folder's files; its text is the folder's path.
class FileList : public Control {
public:
  FileList(Window& window, std::string itsname, Files& machine)
      : Control(window, std::move(itsname)), files(machine) {}

  const std::string& path() const { return text(); }
  const std::string& pattern() const { return ownpattern; }

  // The names of the folder's files that match the pattern, in ascending order; none when the
  // folder cannot be listed.
  const std::vector<std::string>& names() const { return ownnames; }

  void setpath(const std::string& folder);
  void setpattern(const std::string& newpattern);

private:
  void fill();

  Files& files;
  std::string ownpattern = "*";
  std::vector<std::string> ownnames;
};
