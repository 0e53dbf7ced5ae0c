// How maps are replaced by their converted selves so that no instant is without a map.
#include "platform/replacing.h"

#include <algorithm>
#include <new>
#include <optional>
#include <span>
#include <utility>

namespace {

constexpr std::size_t most_maps = 64;         // in a batch
constexpr std::size_t most_bytes = 16 << 20;  // of their content

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

  const std::string& entry() const { return name; }

private:
  OpenMap& map;
  std::string name;  // empty when there is no file
};

}  // namespace

// A replacement in progress: its steps in the order in which they are taken. What a step leaves
// unflushed is flushed before the next one.
class ReplacementBatch::Replacing {
public:
  Replacing(std::unique_ptr<OpenMap> map_in, std::string was_in, std::string backup_in)
      : owned_map(std::move(map_in)), was(std::move(was_in)), new_backup(std::move(backup_in)),
        out_of_memory(failure("the memory is not enough")) {}

  Result<Done> lock();
  Result<Done> find_companions(const std::vector<NewFile>& new_files);
  Result<Done> write_temporaries(const std::vector<NewFile>& new_files, std::string_view result);
  Result<Done> check_map();
  Result<Done> place_companions();
  Result<Done> move_older_backup();
  Result<Done> make_backup();
  Result<Done> place_copy();
  Result<Done> replace();

  // Takes a step unless one has failed before.
  template <class Step> void take(Step step);

  // What a step has left unflushed; `action` is for a failure.
  struct ToFlush {
    std::string entry, action;
  };
  std::vector<ToFlush> unflushed;

  // Notes what came of flushing all that was unflushed, in its order.
  void note_flushed(std::span<const Unflushed> results);

  // Ends the replacement for want of memory.
  void fail_out_of_memory() { fail(std::move(out_of_memory)); }

  bool conflicts_with(const Replacing& other) const {
    return state.same_file(other.state) || folded == other.folded;
  }
  std::size_t size() const { return was.size(); }
  OpenMap& open_map() const { return map; }

  Result<Done> outcome = Done{};

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
  template <class Rename> Result<Done> give_free_number(const std::string& name, Rename rename);
  bool is_map(const std::string& name);
  Result<Done> link_or_copy_backup();
  Result<Done> link_in_place_of_equal_backup();
  Result<Done> number_equal_backup();
  Result<Done> write_copy();
  Result<Done> adopt_link();
  Result<Done> adopt_copy();
  Result<Done> check_backup();
  Result<Done> place(Prepared& file, const std::string& kept);
  Result<OpenMap::Kind> kind_of(const std::string& name);
  Result<Done> flush(const std::string& name);
  void fail(Failure failure);
  void undo_link();
  Failure failure(std::string reason) const { return {map.path, "convert it", std::move(reason)}; }
  Failure changed() const { return failure("it has changed since it was read"); }

  const std::unique_ptr<OpenMap> owned_map;
  OpenMap& map = *owned_map;
  const std::string was;         // the map's content, as it was read
  const std::string new_backup;  // the backup's name; empty when there is none to be made
  Failure out_of_memory;         // made beforehand: then there is no memory for it
  OpenMap::FileState state{};    // of the map when it was read, or compared again
  std::string folded;            // see OpenMap::folded

  std::vector<std::string> companions;  // their names as the folder spells them, in order
  std::string backup;                // the older backup as the folder spells it, then the new one
  bool backup_is_equal = false;      // the older one holds what the map holds
  bool backup_is_hard_link = false;  // to the map's own file
  bool made_link = false;            // in this run
  std::optional<Temporary> equal_backup;  // an older backup that the link takes the place of
  std::optional<Temporary> copy;          // of the map, before it gets its backup name
  OpenMap::FileState backup_state{};      // of a backup that is no hard link, when it was compared
  std::vector<Prepared> prepared;         // the companions, then the map
};

// A step that runs out of memory fails like any other.
template <class Step> void ReplacementBatch::Replacing::take(Step step) {
  if (!outcome)
    return;
  try {
    if (auto done = step(); !done)
      fail(done.failure());
  } catch (const std::bad_alloc&) {
    fail_out_of_memory();
  }
}

void ReplacementBatch::Replacing::note_flushed(std::span<const Unflushed> results) {
  for (std::size_t i = 0; i < results.size(); ++i)
    if (!results[i].flushed)
      return fail({map.path, unflushed[i].action, results[i].flushed.failure().reason});
  unflushed.clear();
}

// Where memory runs out again, the backup name stays.
void ReplacementBatch::Replacing::fail(Failure failure) {
  outcome = std::move(failure);
  unflushed.clear();
  try {
    undo_link();
  } catch (const std::bad_alloc&) {
  }
}

Result<Done> ReplacementBatch::Replacing::flush(const std::string& name) {
  unflushed.push_back({name, "flush " + name});
  return Done{};
}

Result<Done> ReplacementBatch::Replacing::lock() {
  const auto locked = map.lock();
  if (!locked)
    return locked.failure();
  state = *locked;
  folded = map.folded();
  return Done{};
}

// Looks every name up once, before the first change to the folder.
Result<Done> ReplacementBatch::Replacing::find_companions(const std::vector<NewFile>& new_files) {
  for (const NewFile& file : new_files) {
    const auto name = find_companion(file.name);
    if (!name)
      return name.failure();
    companions.push_back(name->empty() ? file.name : *name);
  }
  if (new_backup.empty())
    return Done{};
  auto found = find_companion(new_backup);
  if (!found)
    return found.failure();
  backup = *std::move(found);
  return Done{};
}

// How the folder spells a companion; empty when there is none.
Result<std::string> ReplacementBatch::Replacing::find_companion(const std::string& name) {
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

Result<Done> ReplacementBatch::Replacing::write_temporaries(const std::vector<NewFile>& new_files,
                                                            std::string_view result) {
  for (std::size_t i = 0; i < new_files.size(); ++i)
    if (auto written = write_temporary(new_files[i], companions[i]); !written)
      return written;
  return new_backup.empty() ? Result<Done>(Done{}) : write_temporary({map.name, result}, map.name);
}

// `name` is what the temporary file will be renamed to.
Result<Done> ReplacementBatch::Replacing::write_temporary(const NewFile& file,
                                                          const std::string& name) {
  const std::string action = "write " + file.name;
  auto written = doing(action, [&] { return map.write_temporary(file.text); });
  if (!written)
    return written.failure();
  prepared.push_back({Temporary(map, *std::move(written)), name});
  unflushed.push_back({prepared.back().temporary.entry(), action});
  return Done{};
}

Result<Done> ReplacementBatch::Replacing::check_map() { return check_unchanged(state.settled); }

// The map must be as it was read. A state that is not settled cannot show that: a map that was
// written just before may be written again within the same time stamp, or get its time stamp late.
Result<Done> ReplacementBatch::Replacing::check_unchanged(bool by_state) {
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
Result<Done> ReplacementBatch::Replacing::check_content() {
  const auto same = map.holds(map.name, was);
  if (!same)
    return same.failure();
  return *same ? Result<Done>(Done{}) : changed();
}

// A name must be that of the file that was read, and nobody may have written to that file.
Result<Done> ReplacementBatch::Replacing::check_state(const std::string& name) {
  const auto now = map.state_of(name);
  if (!now)
    return now.failure();
  return *now == state ? Result<Done>(Done{}) : changed();
}

Result<Done> ReplacementBatch::Replacing::place_companions() {
  for (std::size_t i = 0; i < companions.size(); ++i)
    if (auto placed = place(prepared[i], ""); !placed)
      return placed;
  return Done{};
}

Result<Done> ReplacementBatch::Replacing::place(Prepared& file, const std::string& kept) {
  return doing("write " + file.name, [&] { return file.temporary.rename(file.name, kept); });
}

// A backup of other content makes room for the new one. Its new name is flushed before another
// file gets the old one.
Result<Done> ReplacementBatch::Replacing::move_older_backup() {
  if (backup.empty())
    return Done{};
  const auto equal = is_backup(backup);
  if (!equal)
    return equal.failure();
  backup_is_equal = *equal;
  if (backup_is_equal)
    return Done{};
  const auto kind = kind_of(backup);
  if (!kind)
    return kind.failure();
  return give_free_number(backup, [&](const std::string& free) {
    auto moved = map.rename_no_replace(backup, free);
    if (moved && *moved && *kind == OpenMap::Kind::file)
      unflushed.push_back({free, "flush " + free});
    return moved;
  });
}

// Makes sure that the map has a backup. It is on the disk before the result is renamed over the
// map: flushing a file flushes its names as well.
Result<Done> ReplacementBatch::Replacing::make_backup() {
  if (new_backup.empty())
    return Done{};
  if (backup_is_equal)
    return link_in_place_of_equal_backup();
  backup = new_backup;
  return link_or_copy_backup();
}

// Whether an older backup holds just what the map holds.
Result<bool> ReplacementBatch::Replacing::is_backup(const std::string& name) {
  const auto kind = kind_of(name);
  if (!kind)
    return kind.failure();
  if (*kind != OpenMap::Kind::file)
    return false;
  return doing("read " + name, [&] { return map.holds(name, was); });
}

// Calls `rename` with the name of a backup and the first number that is free.
template <class Rename>
Result<Done> ReplacementBatch::Replacing::give_free_number(const std::string& name, Rename rename) {
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
Result<Done> ReplacementBatch::Replacing::link_or_copy_backup() {
  const auto linked =
      doing("make its backup " + backup, [&] { return map.link(map.name, backup); });
  if (!linked)
    return linked.failure();
  made_link = *linked;
  return *linked ? adopt_link() : write_copy();
}

// The map's own file takes the place of a backup that holds the same, so that what another program
// that has the map open writes to it is in the backup. The older backup waits under a temporary
// name until the map is replaced.
Result<Done> ReplacementBatch::Replacing::link_in_place_of_equal_backup() {
  if (is_map(backup))
    return adopt_link();
  const std::string action = "make its backup " + backup;
  std::string aside = OpenMap::temporary_name();
  const auto moved = doing(action, [&] { return map.rename_no_replace(backup, aside); });
  if (!moved)
    return moved.failure();
  if (!*moved)
    return Failure{map.path, action, "the name is taken"};
  equal_backup.emplace(map, std::move(aside));
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
  const auto equal = doing("read " + backup, [&] { return map.holds(equal_backup->entry(), was); });
  if (!equal)
    return equal.failure();
  if (!*equal)  // somebody has just written to it
    if (auto numbered = number_equal_backup(); !numbered)
      return numbered;
  return adopt_link();
}

// Gives the older backup a name that nothing else wants.
Result<Done> ReplacementBatch::Replacing::number_equal_backup() {
  auto numbered = give_free_number(
      backup, [&](const std::string& free) { return equal_backup->rename_no_replace(free); });
  if (numbered)
    equal_backup.reset();
  return numbered;
}

Result<Done> ReplacementBatch::Replacing::write_copy() {
  const std::string action = "make its backup " + backup;
  auto written = doing(action, [&] { return map.write_temporary(was); });
  if (!written)
    return written.failure();
  copy.emplace(map, *std::move(written));
  unflushed.push_back({copy->entry(), action});
  return Done{};
}

Result<Done> ReplacementBatch::Replacing::place_copy() {
  if (!copy)
    return Done{};
  const std::string action = "make its backup " + backup;
  const auto renamed = doing(action, [&] { return copy->rename_no_replace(backup); });
  if (!renamed)
    return renamed.failure();
  return *renamed ? adopt_copy() : Failure{map.path, action, "the name is taken"};
}

// The backup was made as a hard link to the map. File systems that give each name a file number of
// its own do not show that it is one, and another file may have had the map's name in that moment:
// then it counts as a copy.
Result<Done> ReplacementBatch::Replacing::adopt_link() {
  const auto now = map.state_of(backup);
  if (!now)
    return now.failure();
  if (!now->same_file(state))
    return adopt_copy();
  backup_is_hard_link = true;
  return *now == state ? flush(map.name) : changed();
}

// The backup is another file than the map. It is flushed, and must hold what the map holds.
Result<Done> ReplacementBatch::Replacing::adopt_copy() {
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
Result<Done> ReplacementBatch::Replacing::check_backup() {
  const auto now = doing("look at " + backup, [&] { return map.state_of(backup); });
  if (!now)
    return now.failure();
  const bool same = backup_is_hard_link ? now->same_file(state) : *now == backup_state;
  return same ? Result<Done>(Done{}) : failure("its backup " + backup + " has changed");
}

// The last check comes after everything slow, so that it sees what is saved while the map is
// compared or its backup is copied or flushed. Where the map's own file does not become the backup,
// content is compared, so that not even a writer who sets the time back loses anything.
Result<Done> ReplacementBatch::Replacing::replace() {
  if (new_backup.empty())
    return Done{};
  if (auto checked = check_backup(); !checked)
    return checked;
  if (auto checked = check_unchanged(state.settled && backup_is_hard_link); !checked)
    return checked;
  return place(prepared.back(), backup);
}

// After a failure: takes the backup name away again that the map got as a second hard link, and
// gives it back to the older backup that had it. Both names must still be those of the map's file:
// else the backup may be its only name.
void ReplacementBatch::Replacing::undo_link() {
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

bool ReplacementBatch::Replacing::is_map(const std::string& name) {
  const auto now = map.state_of(name);
  return now && now->same_file(state);
}

Result<OpenMap::Kind> ReplacementBatch::Replacing::kind_of(const std::string& name) {
  return doing("look at " + name, [&] { return map.kind_of(name); });
}

ReplacementBatch::ReplacementBatch(Files& files_in)
    : files(files_in), most(std::min(most_maps, files.most_open_maps())) {}

ReplacementBatch::~ReplacementBatch() = default;

bool ReplacementBatch::has_room(std::size_t size) const {
  return empty() || (maps.size() < most && bytes + size <= most_bytes);
}

bool ReplacementBatch::must_wait(const Replacing& replacing) const {
  return std::any_of(maps.begin(), maps.end(),
                     [&](const auto& other) { return other->conflicts_with(replacing); });
}

Result<Done> ReplacementBatch::add(std::unique_ptr<OpenMap> map, Replacement replacement) {
  auto replacing = std::make_unique<Replacing>(std::move(map), std::move(replacement.was),
                                               std::move(replacement.backup));
  replacing->take([&] { return replacing->lock(); });
  if (replacing->outcome && must_wait(*replacing))
    return Failure{replacing->open_map().path, "convert it", "another map comes first"};
  replacing->take([&] { return replacing->find_companions(replacement.companions); });
  replacing->take(
      [&] { return replacing->write_temporaries(replacement.companions, replacement.result); });
  if (!replacing->outcome)
    return replacing->outcome;
  maps.push_back(std::move(replacing));
  bytes += maps.back()->size();
  return Done{};
}

std::vector<Result<Done>> ReplacementBatch::commit() {
  constexpr Result<Done> (Replacing::* steps[])() = {
      &Replacing::check_map,   &Replacing::place_companions, &Replacing::move_older_backup,
      &Replacing::make_backup, &Replacing::place_copy,       &Replacing::replace,
  };
  std::vector<Result<Done>> outcomes;
  outcomes.reserve(maps.size());
  const Maps committed = std::exchange(maps, {});
  bytes = 0;
  flush(committed);
  for (const auto step : steps) {
    for (const auto& replacing : committed)
      replacing->take([&] { return (*replacing.*step)(); });
    flush(committed);
  }
  for (const auto& replacing : committed)
    outcomes.push_back(std::move(replacing->outcome));
  return outcomes;
}

// Flushes what the last step has left unflushed.
void ReplacementBatch::flush(const Maps& flushed) try {
  std::vector<Unflushed> unflushed;
  for (const auto& replacing : flushed)
    for (const auto& file : replacing->unflushed)
      unflushed.push_back({replacing->open_map(), file.entry});
  if (unflushed.empty())
    return;
  files.flush(unflushed);
  std::span<const Unflushed> rest = unflushed;
  for (const auto& replacing : flushed) {
    const std::size_t count = replacing->unflushed.size();
    replacing->note_flushed(rest.first(count));
    rest = rest.subspan(count);
  }
} catch (const std::bad_alloc&) {
  for (const auto& replacing : flushed)
    if (!replacing->unflushed.empty())
      replacing->fail_out_of_memory();
}
