// How a map is replaced by its converted self so that no instant is without the map.
#include "platform/replacing.h"

#include <optional>
#include <random>
#include <utility>

namespace {

constexpr std::string_view temporary_start = ".vora-map-updater-";
constexpr std::string_view temporary_end = ".tmp";

constexpr int first_backup_number = 2;  // of backups that are renamed to make room

// Takes a step, and names what was tried when it fails. The name is made before the step: memory
// may run out for it, but not once a file is renamed.
template <class Step> auto doing(const std::string& action, Step step) -> decltype(step()) {
  auto result = step();
  if (result)
    return result;
  Failure failure = result.failure();
  failure.action = action;
  return failure;
}

// A temporary file in the map's folder. It is removed unless it is renamed.
class Temporary {
public:
  Temporary(OpenMap& map_in, std::string name_in) : map(map_in), name(std::move(name_in)) {}
  Temporary(Temporary&& other) noexcept : map(other.map), name(std::exchange(other.name, {})) {}
  Temporary& operator=(Temporary&&) = delete;
  ~Temporary() {
    if (!name.empty())
      map.remove(name);
  }

  Result<Done> rename(const std::string& to, const std::string& kept) {
    auto renamed = map.rename(name, to, kept);
    if (renamed)
      name.clear();
    return renamed;
  }

  Result<bool> rename_no_replace(const std::string& to) {
    auto renamed = map.rename_no_replace(name, to);
    if (renamed && *renamed)
      name.clear();
    return renamed;
  }

  // Leaves the file as it is.
  void keep() { name.clear(); }

private:
  OpenMap& map;
  std::string name;  // empty when there is no file
};

// A replacement in progress: its steps in the order in which they are taken.
class Replacing {
public:
  Replacing(OpenMap& map_in, const Replacement& wanted) : map(map_in), replacement(wanted) {}

  Result<Done> lock();
  Result<Done> find_companions();
  Result<Done> write_temporaries();
  Result<Done> check_map();
  Result<Done> place_companions();
  Result<Done> make_backup();
  Result<Done> replace();

  // After a failure: takes the backup name away again that the map got as a second hard link, and
  // gives it back to the older backup that had it.
  void undo_link();

private:
  // A temporary file, and the name that it will get.
  struct Prepared {
    Temporary temporary;
    std::string name;
  };

  Result<std::string> find_companion(const std::string& name);
  Result<Done> write_temporary(const NewFile& file, const std::string& name);
  Result<Done> check_unchanged(bool by_state);
  Result<Done> check_content();
  Result<Done> check_state(const std::string& name);
  Result<bool> is_backup(const std::string& name);
  Result<Done> move_aside(const std::string& name);
  template <class Rename> Result<Done> give_free_number(const std::string& name, Rename rename);
  bool is_map(const std::string& name);
  Result<Done> link_or_copy_backup();
  Result<Done> link_in_place_of_equal_backup();
  Result<Done> number_equal_backup();
  Result<Done> copy_backup();
  Result<Done> adopt_link();
  Result<Done> adopt_copy();
  Result<Done> check_backup();
  Result<Done> place(Prepared& file, const std::string& kept);
  Result<OpenMap::Kind> kind_of(const std::string& name);
  Result<Done> flush(const std::string& name) {
    return doing("flush " + name, [&] { return map.flush(name); });
  }
  Failure failure(std::string reason) const { return {map.path, "convert it", std::move(reason)}; }
  Failure changed() const { return failure("it has changed since it was read"); }

  OpenMap& map;
  const Replacement& replacement;
  OpenMap::FileState state{};  // of the map when it was read, or compared again

  std::vector<std::string> companions;  // their names as the folder spells them, in order
  std::string backup;                // the older backup as the folder spells it, then the new one
  bool backup_is_hard_link = false;  // to the map's own file
  bool made_link = false;            // in this run
  std::optional<Temporary> equal_backup;  // an older backup that the link takes the place of
  OpenMap::FileState backup_state{};      // of a backup that is no hard link, when it was compared
  std::vector<Prepared> prepared;         // the companions, then the map
};

Result<Done> Replacing::lock() {
  const auto locked = map.lock();
  if (!locked)
    return locked.failure();
  state = *locked;
  return Done{};
}

// Looks every name up once, before the first change to the folder.
Result<Done> Replacing::find_companions() {
  for (const NewFile& file : replacement.companions) {
    const auto name = find_companion(file.name);
    if (!name)
      return name.failure();
    companions.push_back(name->empty() ? file.name : *name);
  }
  if (replacement.backup.empty())
    return Done{};
  auto found = find_companion(replacement.backup);
  if (!found)
    return found.failure();
  backup = *std::move(found);
  return Done{};
}

// How the folder spells a companion; empty when there is none.
Result<std::string> Replacing::find_companion(const std::string& name) {
  std::string found = map.spelled(name);
  if (found.empty())
    return found;
  const auto kind = kind_of(found);
  if (!kind)
    return kind.failure();
  if (*kind == OpenMap::Kind::folder)
    return failure("a folder has the name " + name);
  return found;
}

Result<Done> Replacing::write_temporaries() {
  for (std::size_t i = 0; i < companions.size(); ++i) {
    const NewFile& file = replacement.companions[i];
    if (auto written = write_temporary(file, companions[i]); !written)
      return written;
  }
  return replacement.backup.empty() ? Result<Done>(Done{})
                                    : write_temporary({map.name, replacement.result}, map.name);
}

// `name` is what the temporary file will be renamed to.
Result<Done> Replacing::write_temporary(const NewFile& file, const std::string& name) {
  auto written = doing("write " + file.name, [&] { return map.write_temporary(file.text); });
  if (!written)
    return written.failure();
  prepared.push_back({Temporary(map, *std::move(written)), name});
  return Done{};
}

Result<Done> Replacing::check_map() { return check_unchanged(state.settled); }

// The map must be as it was read. A state that is not settled cannot show that: a map that was
// written just before may be written again within the same time stamp, or get its time stamp late.
Result<Done> Replacing::check_unchanged(bool by_state) {
  if (!by_state) {
    const auto now = map.state_of(map.name);
    if (!now)
      return now.failure();
    if (!now->same_file(state))
      return changed();
    state = *now;
    if (auto checked = check_content(); !checked)
      return checked;
  }
  return check_state(map.name);
}

// What somebody else has saved since the reading must not be lost.
Result<Done> Replacing::check_content() {
  const auto same = map.holds(map.name, replacement.was);
  if (!same)
    return same.failure();
  return *same ? Result<Done>(Done{}) : changed();
}

// A name must be that of the file that was read, and nobody may have written to that file.
Result<Done> Replacing::check_state(const std::string& name) {
  const auto now = map.state_of(name);
  if (!now)
    return now.failure();
  return *now == state ? Result<Done>(Done{}) : changed();
}

Result<Done> Replacing::place_companions() {
  for (std::size_t i = 0; i < companions.size(); ++i)
    if (auto placed = place(prepared[i], ""); !placed)
      return placed;
  return Done{};
}

Result<Done> Replacing::place(Prepared& file, const std::string& kept) {
  return doing("write " + file.name, [&] { return file.temporary.rename(file.name, kept); });
}

// Makes sure that the map has a backup, and that this is on the disk before the result is
// renamed over the map: flushing a file flushes its names as well.
Result<Done> Replacing::make_backup() {
  if (replacement.backup.empty())
    return Done{};
  if (!backup.empty()) {
    const auto equal = is_backup(backup);
    if (!equal)
      return equal.failure();
    if (*equal)
      return link_in_place_of_equal_backup();
    if (auto moved = move_aside(backup); !moved)
      return moved;
  }
  backup = replacement.backup;
  return link_or_copy_backup();
}

// Whether an older backup holds just what the map holds.
Result<bool> Replacing::is_backup(const std::string& name) {
  const auto kind = kind_of(name);
  if (!kind)
    return kind.failure();
  if (*kind != OpenMap::Kind::file)
    return false;
  return doing("read " + name, [&] { return map.holds(name, replacement.was); });
}

Result<Done> Replacing::move_aside(const std::string& name) {
  const auto kind = kind_of(name);
  if (!kind)
    return kind.failure();
  return give_free_number(name, [&](const std::string& free) -> Result<bool> {
    auto moved = map.rename_no_replace(name, free);
    const bool is_file = *kind == OpenMap::Kind::file;
    if (!moved || !*moved || !is_file)
      return moved;
    const auto flushed = flush(free);
    return flushed ? moved : flushed.failure();
  });
}

// Calls `rename` with the name of a backup and the first number that is free.
template <class Rename>
Result<Done> Replacing::give_free_number(const std::string& name, Rename rename) {
  for (int number = first_backup_number;; ++number) {
    const std::string free = name + std::to_string(number);
    if (!map.spelled(free).empty())
      continue;
    const auto renamed = doing("move " + name + " aside", [&] { return rename(free); });
    if (!renamed)
      return renamed.failure();
    if (*renamed)
      return Done{};
  }
}

// A hard link to the map; a copy where the file system has no hard links.
Result<Done> Replacing::link_or_copy_backup() {
  const auto linked =
      doing("make its backup " + backup, [&] { return map.link(map.name, backup); });
  if (!linked)
    return linked.failure();
  made_link = *linked;
  return *linked ? adopt_link() : copy_backup();
}

// The map's own file takes the place of a backup that holds the same, so that what another program
// that has the map open writes to it is in the backup. The older backup waits under a temporary
// name until the map is replaced.
Result<Done> Replacing::link_in_place_of_equal_backup() {
  if (is_map(backup))
    return adopt_link();
  const std::string action = "make its backup " + backup;
  const std::string aside = OpenMap::temporary_name();
  const auto moved = doing(action, [&] { return map.rename_no_replace(backup, aside); });
  if (!moved)
    return moved.failure();
  if (!*moved)
    return Failure{map.path, action, "the name is taken"};
  equal_backup.emplace(map, aside);
  const auto linked = doing(action, [&] { return map.link(map.name, backup); });
  if (!linked)
    return linked.failure();
  if (!*linked) {
    if (auto restored = doing(action, [&] { return equal_backup->rename(backup, ""); }); !restored)
      return restored;
    equal_backup.reset();
    return adopt_copy();
  }
  made_link = true;
  const auto equal = doing("read " + backup, [&] { return map.holds(aside, replacement.was); });
  if (!equal)
    return equal.failure();
  if (!*equal)  // somebody has just written to it
    if (auto numbered = number_equal_backup(); !numbered)
      return numbered;
  return adopt_link();
}

// Gives the older backup a name that nothing else wants.
Result<Done> Replacing::number_equal_backup() {
  auto numbered = give_free_number(
      backup, [&](const std::string& free) { return equal_backup->rename_no_replace(free); });
  if (numbered)
    equal_backup.reset();
  return numbered;
}

Result<Done> Replacing::copy_backup() {
  const std::string action = "make its backup " + backup;
  auto written = doing(action, [&] { return map.write_temporary(replacement.was); });
  if (!written)
    return written.failure();
  const auto renamed =
      doing(action, [&] { return Temporary(map, *std::move(written)).rename_no_replace(backup); });
  if (!renamed)
    return renamed.failure();
  if (!*renamed)
    return Failure{map.path, action, "the name is taken"};
  return adopt_copy();
}

// The backup was made as a hard link to the map. File systems that give each name a file number of
// its own do not show that it is one, and another file may have had the map's name in that moment:
// then it counts as a copy.
Result<Done> Replacing::adopt_link() {
  const auto now = map.state_of(backup);
  if (!now)
    return now.failure();
  if (!now->same_file(state))
    return adopt_copy();
  backup_is_hard_link = true;
  return *now == state ? flush(map.name) : changed();
}

// The backup is another file than the map. It is flushed, and must hold what the map holds.
Result<Done> Replacing::adopt_copy() {
  const auto now = map.state_of(backup);
  if (!now)
    return now.failure();
  backup_state = *now;
  const auto equal = is_backup(backup);
  if (!equal)
    return equal.failure();
  return *equal ? flush(backup) : changed();
}

// Between its flush and the replacement somebody may have removed or changed the backup.
Result<Done> Replacing::check_backup() {
  const auto now = doing("look at " + backup, [&] { return map.state_of(backup); });
  if (!now)
    return now.failure();
  const bool same = backup_is_hard_link ? now->same_file(state) : *now == backup_state;
  return same ? Result<Done>(Done{}) : failure("its backup " + backup + " has changed");
}

// The last check comes after everything slow, so that it sees what is saved while the map is
// compared or its backup is copied or flushed. Where the map's own file does not become the backup,
// content is compared, so that not even a writer who sets the time back loses anything.
Result<Done> Replacing::replace() {
  if (replacement.backup.empty())
    return Done{};
  if (auto checked = check_backup(); !checked)
    return checked;
  if (auto checked = check_unchanged(state.settled && backup_is_hard_link); !checked)
    return checked;
  return place(prepared.back(), backup);
}

// Both names must still be those of the map's file: else the backup may be its only name.
void Replacing::undo_link() {
  const bool linked = made_link && is_map(map.name) && is_map(backup);
  if (!equal_backup) {
    if (linked)
      map.remove(backup);
    return;
  }
  const bool restored = linked ? bool(equal_backup->rename(backup, map.name)) : [&] {
    const auto renamed = equal_backup->rename_no_replace(backup);
    return renamed && *renamed;
  }();
  if (!restored && !number_equal_backup())
    equal_backup->keep();
}

bool Replacing::is_map(const std::string& name) {
  const auto now = map.state_of(name);
  return now && now->same_file(state);
}

Result<OpenMap::Kind> Replacing::kind_of(const std::string& name) {
  return doing("look at " + name, [&] { return map.kind_of(name); });
}

}  // namespace

std::string OpenMap::temporary_name() {
  static std::random_device random;
  return std::string(temporary_start) + std::to_string(random()) + std::string(temporary_end);
}

bool OpenMap::is_temporary(std::string_view name) {
  if (!name.starts_with(temporary_start) || !name.ends_with(temporary_end))
    return false;
  name.remove_prefix(temporary_start.size());
  name.remove_suffix(temporary_end.size());
  return !name.empty() && name.find_first_not_of("0123456789") == name.npos;
}

std::optional<bool> OpenMap::begins_with(const Read& read, std::string_view content) {
  char buffer[1 << 16];
  while (!content.empty()) {
    const std::string_view piece = content.substr(0, sizeof buffer);
    const auto length = read(buffer, piece.size());
    if (!length)
      return std::nullopt;
    if (std::string_view(buffer, *length) != piece)
      return false;
    content.remove_prefix(piece.size());
  }
  return true;
}

Result<Done> replace_map(OpenMap& map, const Replacement& replacement) {
  constexpr Result<Done> (Replacing::*steps[])() = {
      &Replacing::lock,      &Replacing::find_companions,  &Replacing::write_temporaries,
      &Replacing::check_map, &Replacing::place_companions, &Replacing::make_backup,
      &Replacing::replace,
  };
  Replacing replacing(map, replacement);
  for (const auto step : steps)
    if (auto done = (replacing.*step)(); !done) {
      replacing.undo_link();
      return done;
    }
  return Done{};
}
