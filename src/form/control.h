// The controls of the form as plain values: a setter changes the value and refreshes the screen.
#pragma once

#include "form/screen.h"
#include "platform/files.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class Control;

// What the controls of one window share; each adds itself to `controls`.
struct Window {
  Files& files;
  Screen& screen;
  std::vector<Control*> controls;
};

class Control {
public:
  Control(Window& window_in, std::string name_in)
      : window(window_in), own_name(std::move(name_in)) {
    window.controls.push_back(this);
  }
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  const std::string& name() const { return own_name; }

  // A button's or label's caption, a text box's text, a list's drive or folder.
  const std::string& text() const { return own_text; }
  bool enabled() const { return is_enabled; }
  bool visible() const { return is_visible; }
  const std::string& tooltip() const { return own_tooltip; }

  void set_text(std::string new_text) { set(own_text, std::move(new_text)); }
  void set_enabled(bool on) { set(is_enabled, on); }
  void set_visible(bool on) { set(is_visible, on); }
  void set_tooltip(std::string new_tooltip) { set(own_tooltip, std::move(new_tooltip)); }

  // Appends to a text box's text.
  void append(std::string_view more);

  // Stores what the user typed into a text box; the screen shows it already.
  void store_typed(std::string new_text) { own_text = std::move(new_text); }

protected:
  Window& window;
  std::string own_text;

private:
  template <class Value> void set(Value& value, Value new_value) {
    value = std::move(new_value);
    window.screen.refresh(*this);
  }

  const std::string own_name;
  std::string own_tooltip;
  bool is_enabled = true;
  bool is_visible = true;
};

// The list of the machine's drives; its text is the selected one.
class DriveList : public Control {
public:
  using Control::Control;

  std::vector<std::string> drives;  // each a letter and a colon; `set_text` shows them
};

// A row of the directory list.
struct FolderRow {
  std::string name;   // the root's is its path
  std::string path;   // of the folder that opening the row shows
  std::size_t depth;  // 0 for the root
};

// The list that shows a folder and its subfolders; its text is the folder's path.
class DirectoryList : public Control {
public:
  using Control::Control;

  // The folder that it shows, without a trailing "\" except for a drive root; empty before the
  // first `set_path`.
  const std::string& path() const { return text(); }

  // The names of the folder's subfolders in ascending order.
  const std::vector<std::string>& subfolders() const { return own_subfolders; }

  // What the list shows: the folders from the root down to its own, then the subfolders. Empty
  // while it shows no folder.
  std::vector<FolderRow> rows() const;

  // The position in `rows` of the list's own folder; only while it shows one.
  std::size_t own_row() const { return chain().size() - 1; }

  // Points the list at a folder, which is listed anew even if it is shown already; only another
  // folder fires `changed`. Fails, and leaves the list unchanged, when the folder cannot be listed.
  Result<Done> set_path(const std::string& folder);

  std::function<void()> changed;

private:
  std::vector<FolderRow> chain() const;  // the rows from the root down to the list's own folder

  std::vector<std::string> own_subfolders;
};

// The list of a folder's files; its text is the folder's path.
class FileList : public Control {
public:
  using Control::Control;

  const std::string& pattern() const { return own_pattern; }

  // The folder's files that match the pattern, in ascending order; empty when the folder cannot be
  // listed.
  const std::vector<std::string>& names() const { return own_names; }

  void set_path(const std::string& folder);
  void set_pattern(const std::string& new_pattern);

private:
  void fill();

  std::string own_pattern = "*";
  std::vector<std::string> own_names;
};
