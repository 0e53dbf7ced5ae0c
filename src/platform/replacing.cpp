// How maps are replaced by their converted selves so that no instant is without a map.
#include "platform/replacing.h"

#include <algorithm>
#include <optional>
#include <span>
#include <utility>

namespace {

constexpr std::size_t most_maps = 64;         // in a batch
constexpr std::size_t most_bytes = 16 << 20;  // of their content

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

  // Fails when `to` exists.
  Result<Done> rename_no_replace(const std::string& to) {
    const auto renamed = map.rename_no_replace(name, to);
    if (!renamed)
      return renamed.failure();
    if (!*renamed)
      return Failure{map.path, "", "the name is taken"};
    name.clear();
    return Done{};
  }

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
      : owned_map(std::move(map_in)), was(std::move(was_in)), backup(std::move(backup_in)) {}

  Result<Done> lock();
  Result<Done> find_companions(const std::vector<NewFile>& new_files);
  Result<Done> write_temporaries(const std::vector<NewFile>& new_files, std::string_view result);
  Result<Done> check_map();
  Result<Done> place_companions();
  Result<Done> move_older_backup();
  Result<Done> make_backup();
  Result<Done> place_backup();
  Result<Done> replace();

  // Takes a step unless one has failed before.
  template <class Step> void run_step(Step step) {
    if (!outcome)
      return;
    if (auto done = step(); !done)
      fail(done.failure());
  }

  // What a step has left unflushed; `what` it is of the map's, for a failure.
  struct ToFlush {
    std::string entry, what;
  };
  std::vector<ToFlush> unflushed;

  // Ends the replacement, if it has not ended, and undoes what can be undone.
  void fail(Failure failure);

  bool conflicts_with(const Replacing& other) const {
    return state.same_file(other.state) || folded == other.folded;
  }
  std::uint64_t device() const { return state.device; }
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
  Result<bool> holds(const std::string& name, std::string_view content);
  Result<Done> move_aside(const std::string& name);
  bool is_map(const std::string& name);
  bool is_own_backup(const OpenMap::FileState& now) const {
    return backup_is_hard_link ? now.same_file(state) : now == backup_state;
  }
  Result<Done> write_copy();
  Result<Done> check_made(const std::string& name);
  Result<Done> check_backup();
  Result<Done> place(Prepared& file, const std::string& kept);
  Result<OpenMap::Kind> kind_of(const std::string& name);
  Result<Done> flush(const std::string& name, const std::string& what);
  std::string take_back_backup();
  std::string backup_action() const { return "make its backup " + backup; }
  Failure failure(std::string reason) const { return {map.path, "convert it", std::move(reason)}; }
  Failure changed() const { return failure("it has changed since it was read"); }

  const std::unique_ptr<OpenMap> owned_map;
  OpenMap& map = *owned_map;
  const std::string was;                // the map's content, as it was read
  std::string backup;                   // the backup's name; empty when there is none to be made
  OpenMap::FileState state{};           // of the map when it was read, or compared again
  std::string folded;                   // see OpenMap::folded
  std::vector<std::string> companions;  // their names as the folder spells them, in order
  std::vector<Prepared> prepared;       // the companions, then the map
  std::string older_backup;             // as the folder spells it; empty when there is none
  bool replaces_older = false;          // a backup that holds what the map holds, or nothing
  std::optional<Temporary> made;        // the new backup, before it gets its name
  bool placed = false;                  // it has got its name
  bool backup_is_hard_link = false;     // to the map's own file
  OpenMap::FileState backup_state{};    // of a backup that is no hard link, when it was compared
};

void ReplacementBatch::Replacing::fail(Failure failure) {
  if (!outcome)
    return;
  unflushed.clear();
  failure.reason += take_back_backup();
  outcome = std::move(failure);
}

Result<Done> ReplacementBatch::Replacing::flush(const std::string& name, const std::string& what) {
  unflushed.push_back({name, what});
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
  if (backup.empty())
    return Done{};
  auto found = find_companion(backup);
  if (!found)
    return found.failure();
  older_backup = *std::move(found);
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
  return backup.empty() ? Result<Done>(Done{}) : write_temporary({map.name, result}, map.name);
}

// `name` is what the temporary file will be renamed to.
Result<Done> ReplacementBatch::Replacing::write_temporary(const NewFile& file,
                                                          const std::string& name) {
  auto written = with_action("write " + file.name, [&] { return map.write_temporary(file.text); });
  if (!written)
    return written.failure();
  prepared.push_back({Temporary(map, *std::move(written)), name});
  return flush(prepared.back().temporary.entry(), file.name);
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
    if (auto placed_one = place(prepared[i], ""); !placed_one)
      return placed_one;
  return Done{};
}

Result<Done> ReplacementBatch::Replacing::place(Prepared& file, const std::string& kept) {
  return with_action("write " + file.name, [&] { return file.temporary.rename(file.name, kept); });
}

// A backup of other content makes room for the new one. Its new name is flushed before another
// file gets the old one. One that holds what the map holds is replaced: whether it ever reached the
// disk, nobody knows. So is an empty one: a run that was killed may have taken the name with it.
Result<Done> ReplacementBatch::Replacing::move_older_backup() {
  if (older_backup.empty())
    return Done{};
  for (const std::string_view content : {std::string_view(was), std::string_view()}) {
    const auto same = holds(older_backup, content);
    if (!same)
      return same.failure();
    replaces_older |= *same;
  }
  if (!replaces_older)
    return move_aside(older_backup);
  backup = older_backup;
  return Done{};
}

// Whether an entry is a file that holds just that.
Result<bool> ReplacementBatch::Replacing::holds(const std::string& name, std::string_view content) {
  const auto kind = kind_of(name);
  if (!kind)
    return kind.failure();
  if (*kind != OpenMap::Kind::file)
    return false;
  return with_action("read " + name, [&] { return map.holds(name, content); });
}

// Renames a backup to its own name with the first number that is free.
Result<Done> ReplacementBatch::Replacing::move_aside(const std::string& name) {
  const std::string action = "rename its older backup " + name;
  const auto kind = kind_of(name);
  if (!kind)
    return kind.failure();
  for (int number = first_backup_number; number <= last_backup_number; ++number) {
    const std::string free = name + std::to_string(number);
    if (!map.spelled(free).empty())
      continue;
    const auto renamed = with_action(action, [&] { return map.rename_no_replace(name, free); });
    if (!renamed)
      return renamed.failure();
    if (*renamed)
      return *kind == OpenMap::Kind::file ? flush(free, free) : Result<Done>(Done{});
  }
  return Failure{map.path, action, "no number is free"};
}

// The new backup is made under a temporary name. It is the map's own file, so that what another
// program that has the map open still writes to it is in the backup; a copy where the file system
// has no hard links. A run that was killed may have made it.
Result<Done> ReplacementBatch::Replacing::make_backup() {
  if (backup.empty() || (replaces_older && is_map(backup)))
    return Done{};
  std::string free = OpenMap::temporary_name();
  const auto linked = with_action(backup_action(), [&] { return map.link(map.name, free); });
  if (!linked)
    return linked.failure();
  if (!*linked)
    return write_copy();
  made.emplace(map, std::move(free));
  return check_made(made->entry());
}

Result<Done> ReplacementBatch::Replacing::write_copy() {
  auto written = with_action(backup_action(), [&] { return map.write_temporary(was); });
  if (!written)
    return written.failure();
  made.emplace(map, *std::move(written));
  return flush(made->entry(), backup);
}

// The backup and its name are on the disk before the result is renamed over the map: flushing a
// file flushes its names as well.
Result<Done> ReplacementBatch::Replacing::place_backup() {
  if (backup.empty())
    return Done{};
  if (made) {
    const auto renamed = with_action(backup_action(), [&] {
      return replaces_older ? made->rename(backup, "") : made->rename_no_replace(backup);
    });
    if (!renamed)
      return renamed.failure();
    placed = true;
  }
  if (auto checked = check_made(backup); !checked)
    return checked;
  return flush(backup_is_hard_link ? map.name : backup, backup);
}

// Another file may have had the map's name when the link was made, and file systems that give each
// name a file number of its own do not show that it is one: then it must hold what the map holds.
Result<Done> ReplacementBatch::Replacing::check_made(const std::string& name) {
  const auto now = map.state_of(name);
  if (!now)
    return now.failure();
  backup_is_hard_link = now->same_file(state);
  backup_state = *now;
  const auto equal = backup_is_hard_link ? Result<bool>(*now == state) : holds(name, was);
  if (!equal)
    return equal.failure();
  return *equal ? Result<Done>(Done{}) : changed();
}

// Between its flush and the replacement somebody may have removed or changed the backup.
Result<Done> ReplacementBatch::Replacing::check_backup() {
  const auto now = with_action("stat its backup " + backup, [&] { return map.state_of(backup); });
  if (!now)
    return now.failure();
  return is_own_backup(*now) ? Result<Done>(Done{})
                             : failure("its backup " + backup + " has changed");
}

// The last check comes after everything slow, so that it sees what is saved while the map is
// compared or its backup is copied or flushed. Where the map's own file does not become the backup,
// content is compared, so that not even a writer who sets the time back loses anything.
Result<Done> ReplacementBatch::Replacing::replace() {
  if (backup.empty())
    return Done{};
  if (auto checked = check_backup(); !checked)
    return checked;
  if (auto checked = check_unchanged(state.settled && backup_is_hard_link); !checked)
    return checked;
  return place(prepared.back(), backup);
}

// After a failure: removes the backup that this run has made, unless it has taken the place of an
// equal one. Both names must still be those of the run's files, and the map must be locked: else
// another run may have converted it, and the backup may be the only one. Returns what is to be said
// of a backup that stays.
std::string ReplacementBatch::Replacing::take_back_backup() {
  if (!placed || replaces_older)
    return "";
  if (!map.locked)
    return "; its backup " + backup + " stays, since the map cannot be locked";
  const auto now = map.state_of(backup);
  if (now && is_own_backup(*now) && is_map(map.name))
    map.remove(backup);
  return "";
}

bool ReplacementBatch::Replacing::is_map(const std::string& name) {
  const auto now = map.state_of(name);
  return now && now->same_file(state);
}

Result<OpenMap::Kind> ReplacementBatch::Replacing::kind_of(const std::string& name) {
  return with_action("stat " + name, [&] { return map.kind_of(name); });
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
  replacing->run_step([&] { return replacing->lock(); });
  if (replacing->outcome && must_wait(*replacing))
    return Failure{replacing->open_map().path, "convert it", "another map comes first"};
  replacing->run_step([&] { return replacing->find_companions(replacement.companions); });
  replacing->run_step(
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
      &Replacing::make_backup, &Replacing::place_backup,     &Replacing::replace,
  };
  std::vector<Result<Done>> outcomes;
  outcomes.reserve(maps.size());
  const Maps committed = std::exchange(maps, {});
  bytes = 0;
  flush(committed);
  for (const auto step : steps) {
    for (const auto& replacing : committed)
      replacing->run_step([&] { return (*replacing.*step)(); });
    flush(committed);
  }
  for (const auto& replacing : committed)
    outcomes.push_back(std::move(replacing->outcome));
  return outcomes;
}

// Flushes what the last step has left unflushed.
void ReplacementBatch::flush(const Maps& flushed) {
  std::vector<Unflushed> unflushed;
  std::vector<Replacing*> owners;
  for (const auto& replacing : flushed)
    for (const auto& file : replacing->unflushed) {
      unflushed.push_back({replacing->open_map(), file.entry, file.what});
      owners.push_back(replacing.get());
    }
  for (const auto& replacing : flushed)
    replacing->unflushed.clear();
  if (unflushed.empty())
    return;
  files.flush(unflushed);
  for (std::size_t i = 0; i < unflushed.size(); ++i)
    if (!unflushed[i].flushed)
      fail_unflushed(flushed, *owners[i], unflushed[i]);
}

// The system reports a failed write once, to whoever flushes first: what it says of the other files
// of that file system is worth nothing.
void ReplacementBatch::fail_unflushed(const Maps& flushed, Replacing& owner,
                                      const Unflushed& file) {
  const Failure& failure = file.flushed.failure();
  const bool lost = failure.kind == Failure::Kind::unconfirmed;
  owner.fail({failure.path, "write " + file.what,
              (lost ? "the disk did not confirm it: " : "") + failure.reason, failure.kind});
  for (const auto& other : flushed)
    if (lost && other->device() == owner.device())
      other->fail({other->open_map().path, "convert it",
                   "the disk did not confirm that " + file.what + " of " + failure.path +
                       " is written: " + failure.reason,
                   failure.kind});
}
