// The replacement of one map, step by step.
#include "platform/map_replacement.h"

namespace {

// Of backups that are renamed to make room.
constexpr int first_backup_number = 2, last_backup_number = 9999;

// Takes a step, and names what was tried when it fails.
template <class Step> auto with_action(const std::string& action, Step step) -> decltype(step()) {
  auto result = step();
  if (result)
    return result;
  Failure failure = result.failure();
  failure.action = action;
  return failure;
}

}  // namespace

void MapReplacement::fail(Failure failure) {
  if (!outcome)
    return;
  unflushed.clear();
  failure.reason += take_back_backup();
  outcome = std::move(failure);
}

Result<Done> MapReplacement::note_unflushed(const std::string& name, const std::string& what) {
  unflushed.push_back({map, name, what});
  return Done{};
}

Result<Done> MapReplacement::lock() {
  const auto locked = map.lock();
  if (!locked)
    return locked.failure();
  state = *locked;
  folded = map.folded();
  return Done{};
}

// Looks every name up once, before the first change to the folder.
Result<Done> MapReplacement::find_companions(const std::vector<NewFile>& new_files) {
  for (const NewFile& file : new_files) {
    const auto name = find_companion(file.name);
    if (!name)
      return name.failure();
    companions.push_back(name->empty() ? file.name : *name);
  }
  if (backup.empty())
    return Done{};
  auto found = find_companion(backup);
  if (!found)
    return found.failure();
  older_backup = *std::move(found);
  return Done{};
}

// How the folder spells a companion; empty when there is none.
Result<std::string> MapReplacement::find_companion(const std::string& name) {
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

Result<Done> MapReplacement::write_temporaries(const std::vector<NewFile>& new_files,
                                               std::string_view result) {
  for (std::size_t i = 0; i < new_files.size(); ++i)
    if (auto written = write_temporary(new_files[i], companions[i]); !written)
      return written;
  return backup.empty() ? Result<Done>(Done{}) : write_temporary({map.name, result}, map.name);
}

// `name` is what the temporary file will be renamed to.
Result<Done> MapReplacement::write_temporary(const NewFile& file, const std::string& name) {
  auto written =
      with_action("write " + shown(file.name), [&] { return map.write_temporary(file.text); });
  if (!written)
    return written.failure();
  prepared.push_back({Temporary(map, *std::move(written)), name});
  return note_unflushed(prepared.back().temporary.entry(), file.name);
}

Result<Done> MapReplacement::check_map() {
  if (!state.settled)
    if (auto compared = compare_map(); !compared)
      return compared;
  return check_unchanged(map.name, state, changed());
}

// The map must be as it was read: what somebody else has saved since must not be lost. A state that
// is not settled cannot show that: a map that was written just before may be written again within
// the same time stamp, or get its time stamp late.
Result<Done> MapReplacement::compare_map() {
  const auto now = own_state();
  if (!now)
    return now.failure();
  state = *now;
  const auto same = map.holds(map.name, was);
  if (!same)
    return same.failure();
  return *same ? Result<Done>(Done{}) : changed();
}

// The state of the file that was read, which must still have the map's name.
Result<OpenMap::FileState> MapReplacement::own_state() {
  auto now = map.state_of(map.name);
  if (now && !now->same_file(state))
    return changed();
  return now;
}

// The name must still be that file's, and nobody may have written to it.
Result<Done> MapReplacement::check_unchanged(const std::string& name,
                                             const OpenMap::FileState& before, Failure changed) {
  const auto now = map.state_of(name);
  if (!now)
    return now.failure();
  return *now == before ? Result<Done>(Done{}) : std::move(changed);
}

Result<Done> MapReplacement::place_companions() {
  for (std::size_t i = 0; i < companions.size(); ++i)
    if (auto placed_one = place(prepared[i], ""); !placed_one)
      return placed_one;
  return Done{};
}

Result<Done> MapReplacement::place(Prepared& file, const std::string& kept) {
  return with_action("write " + shown(file.name),
                     [&] { return file.temporary.rename(file.name, kept); });
}

// A backup of other content makes room for the new one. Its new name is flushed before another
// file gets the old one. One that holds what the map holds is replaced: whether it ever reached the
// disk, nobody knows. So is an empty one: it may be the placeholder of a run that was killed.
Result<Done> MapReplacement::move_older_backup() {
  if (older_backup.empty())
    return Done{};
  const auto kind = kind_of(older_backup);
  if (!kind)
    return kind.failure();
  if (*kind != OpenMap::Kind::file)
    return move_aside(*kind);
  const auto now = map.state_of(older_backup);  // before the comparison, which takes a while
  if (!now)
    return now.failure();
  const auto same = now->size == 0 ? Result<bool>(true) : holds(older_backup, was);
  if (!same)
    return same.failure();
  if (!*same)
    return move_aside(*kind);
  replaces_older = true;
  older_state = *now;
  backup = older_backup;
  return Done{};
}

// Whether a file holds just that.
Result<bool> MapReplacement::holds(const std::string& name, std::string_view content) {
  return with_action("read " + name, [&] { return map.holds(name, content); });
}

// Renames the older backup, which is of that kind, to its own name with the first number that is
// free, or has only a placeholder.
Result<Done> MapReplacement::move_aside(OpenMap::Kind kind) {
  const std::string action = "rename its older backup " + older_backup;
  for (int number = first_backup_number; number <= last_backup_number; ++number) {
    const std::string free = older_backup + std::to_string(number);
    const std::string taken = map.spelled(free);
    if (!taken.empty() && !is_placeholder(taken))
      continue;
    const auto renamed = with_action(action, [&]() -> Result<bool> {
      if (taken.empty())
        return map.rename_no_replace(older_backup, free);
      const auto replaced = map.rename(older_backup, taken, "");
      return replaced ? Result<bool>(true) : replaced.failure();
    });
    if (!renamed)
      return renamed.failure();
    if (*renamed)
      return kind == OpenMap::Kind::file ? note_unflushed(free, free) : Result<Done>(Done{});
  }
  return Failure{map.path, action, "no number is free"};
}

// Whether an empty file is that of a run that was killed. Without a lock it may be that of a run in
// progress.
bool MapReplacement::is_placeholder(const std::string& name) {
  const auto now = map.state_of(name);
  return map.locked && now && now->size == 0;
}

// The new backup is made under a temporary name. It is the map's own file, so that what another
// program that has the map open still writes to it is in the backup; a copy where the file system
// has no hard links. A run that was killed may have made it.
Result<Done> MapReplacement::make_backup() {
  if (backup.empty() || (replaces_older && is_map(backup)))
    return Done{};
  std::string free = OpenMap::temporary_name();
  const auto linked = with_action(backup_action(), [&] { return map.link(map.name, free); });
  if (!linked)
    return linked.failure();
  if (!*linked)
    return write_copy();
  made.emplace(map, std::move(free));
  if (auto checked = check_made(made->entry()); !checked || !replaces_older)
    return checked;
  return note_unflushed(map.name, backup);  // before it replaces one that may be on the disk
}

Result<Done> MapReplacement::write_copy() {
  auto written = with_action(backup_action(), [&] { return map.write_temporary(was); });
  if (!written)
    return written.failure();
  made.emplace(map, *std::move(written));
  return note_unflushed(made->entry(), backup);
}

// The backup and its name are on the disk before the result is renamed over the map: flushing a
// file flushes its names as well.
Result<Done> MapReplacement::place_backup() {
  if (backup.empty())
    return Done{};
  if (made) {
    if (const auto now = own_state(); !now)
      return now.failure();
    if (replaces_older)  // what somebody has put in its place meanwhile is not replaced
      if (auto checked = check_unchanged(older_backup, older_state, older_backup_changed());
          !checked)
        return checked;
    const auto renamed = with_action(backup_action(), [&] {
      return replaces_older ? made->rename(backup, "") : made->rename_no_replace(backup);
    });
    if (!renamed)
      return renamed.failure();
    placed = true;
  }
  if (auto checked = check_made(backup); !checked)
    return checked;
  return note_unflushed(backup_is_hard_link ? map.name : backup, backup);
}

// Another file may have had the map's name when the link was made, and file systems that give each
// name a file number of its own do not show that it is one: then it must hold what the map holds.
Result<Done> MapReplacement::check_made(const std::string& name) {
  const auto now = map.state_of(name);
  if (!now)
    return now.failure();
  const bool is_hard_link = now->same_file(state);
  const auto equal = is_hard_link ? Result<bool>(*now == state) : holds(name, was);
  if (!equal)
    return equal.failure();
  if (!*equal)
    return changed();
  backup_is_hard_link = is_hard_link;
  backup_state = *now;
  return Done{};
}

// Between its flush and the replacement somebody may have removed or changed the backup.
Result<Done> MapReplacement::check_backup() {
  const auto now = with_action("check its backup " + backup, [&] { return map.state_of(backup); });
  if (!now)
    return now.failure();
  return is_own_backup(*now) ? Result<Done>(Done{})
                             : failure("its backup " + backup + " has changed");
}

// The last checks come after everything slow, so that they see what is saved while the map is
// compared or its backup is copied or flushed. Where the map's own file does not become the backup,
// content is compared, so that not even a writer who sets the time back loses anything.
Result<Done> MapReplacement::replace() {
  if (backup.empty())
    return Done{};
  if (!state.settled || !backup_is_hard_link)
    if (auto compared = compare_map(); !compared)
      return compared;
  if (auto checked = check_backup(); !checked)
    return checked;
  if (auto checked = check_unchanged(map.name, state, changed()); !checked)
    return checked;
  return place(prepared.back(), backup);
}

// After a failure: removes the backup that this run has made, unless it has taken the place of an
// equal one. Both names must still be those of the run's files, and the map must be locked: else
// another run may have converted it, and the backup may be the only one. Returns what is to be said
// of a backup that stays.
std::string MapReplacement::take_back_backup() {
  if (!placed || replaces_older)
    return "";
  const std::string stays = "; its backup " + backup + " stays, since ";
  if (!map.locked)
    return stays + "the map cannot be locked";
  if (!is_map(map.name))
    return stays + "another file may have the map's name";
  const auto now = map.state_of(backup);
  if (!now || !is_own_backup(*now))
    return stays + "it may be another program's";
  map.remove(backup);
  return "";
}

bool MapReplacement::is_map(const std::string& name) {
  const auto now = map.state_of(name);
  return now && now->same_file(state);
}

Result<OpenMap::Kind> MapReplacement::kind_of(const std::string& name) {
  return with_action("check " + name, [&] { return map.kind_of(name); });
}
