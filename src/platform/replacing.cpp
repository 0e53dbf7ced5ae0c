// Puts a converted map in the place of the old one, so that no instant is without the map.
#include "platform/replacing.h"

namespace {

constexpr int first_backup_number = 2;  // of the backups that were moved aside

std::string name_of(const std::string& path) { return path.substr(path.rfind('\\') + 1); }

}  // namespace

Replacing::Temporary::~Temporary() {
  if (!name.empty())
    folder.remove(name);
}

MapFolder::Answer<Done> Replacing::Temporary::take(const std::string& new_name,
                                                   const std::string& kept) {
  auto taken = folder.rename(name, new_name, kept);
  if (taken)
    name.clear();
  return taken;
}

MapFolder::Answer<bool> Replacing::Temporary::take_no_replace(const std::string& new_name) {
  auto taken = folder.rename_no_replace(name, new_name);
  if (taken && *taken)
    name.clear();
  return taken;
}

Failure Replacing::failure(const std::string& action, const MapFolder::Reason& reason) const {
  return {replacement.map, action, reason.words};
}

Failure Replacing::changed() const {
  return {replacement.map, "convert it", "it has changed since it was read"};
}

Result<MapFolder::Kind> Replacing::kind_of(const std::string& name) const {
  const auto kind = folder.kind_of(name);
  if (!kind)
    return failure("look at " + name, kind.failure());
  return *kind;
}

Result<Done> Replacing::run() {
  if (auto locked = lock_map(); !locked)
    return locked;
  if (auto free = check_companions(); !free)
    return free;
  if (auto ready = prepare(); !ready)
    return ready;
  if (auto checked = check_map(stamp.settled); !checked)
    return checked;
  return commit();
}

Result<Done> Replacing::lock_map() {
  const auto locked = folder.lock();
  if (!locked)
    return failure("convert it", locked.failure());
  if (!*locked)
    return Failure{replacement.map, "convert it", "another program has locked it"};
  stamp = **locked;
  return Done{};
}

// The map must hold what was converted: what somebody else has saved since must not be lost.
Result<Done> Replacing::check_content() {
  const auto same = folder.holds(map_name, replacement.was);
  if (!same)
    return failure("convert it", same.failure());
  return *same ? Result<Done>(Done{}) : changed();
}

// A name of the map must be that of the file that was read, and nobody may have written to it.
Result<Done> Replacing::check_stamp(const std::string& name) {
  const auto now = folder.stamp_of(name);
  if (!now)
    return failure("convert it", now.failure());
  return *now == stamp ? Result<Done>(Done{}) : changed();
}

// The map must be as it was read. The stamp does not tell it of a map that had been written just
// before: it may have been written again without another stamp, or have got its stamp late.
Result<Done> Replacing::check_map(bool by_stamp) {
  if (!by_stamp) {
    const auto now = folder.stamp_of(map_name);
    if (!now)
      return failure("convert it", now.failure());
    if (!now->same_file(stamp))
      return changed();
    stamp = *now;
    if (auto checked = check_content(); !checked)
      return checked;
  }
  return check_stamp(map_name);
}

// The name on the disk of a companion, which may be spelled in another letter case there; empty
// when there is none.
Result<std::string> Replacing::spelled(const std::string& path) {
  const std::string name = name_of(path);
  std::string found = folder.spelled(name);
  if (found.empty())
    return found;
  const auto kind = kind_of(found);
  if (!kind)
    return kind.failure();
  if (*kind == MapFolder::Kind::folder)
    return Failure{replacement.map, "convert it", "a folder has the name " + name};
  return found;
}

// Looks every name up once, before the first change to the folder.
Result<Done> Replacing::check_companions() {
  for (const NewFile& file : replacement.files) {
    const auto name = file.path == replacement.map ? map_name : spelled(file.path);
    if (!name)
      return name.failure();
    names.push_back(name->empty() ? name_of(file.path) : *name);
  }
  if (replacement.backup.empty())
    return Done{};
  auto backup = spelled(replacement.backup);
  if (!backup)
    return backup.failure();
  backup_name = *std::move(backup);
  return Done{};
}

Result<Done> Replacing::prepare() {
  for (const NewFile& file : replacement.files) {
    auto written = folder.write_temporary(file.text);
    if (!written)
      return failure("write " + name_of(file.path), written.failure());
    prepared.emplace_back(folder, *std::move(written));
  }
  return Done{};
}

Result<Done> Replacing::commit() {
  const bool replaces_map = !replacement.backup.empty();
  for (std::size_t i = 0; i + replaces_map < prepared.size(); ++i)
    if (auto taken = take(i, ""); !taken)
      return taken;
  if (!replaces_map)
    return Done{};
  if (auto kept = keep_backup(); !kept)
    return kept;
  // The last looks stand behind all that is slow: what is saved while the map is compared, or while
  // its backup is copied or flushed, is found out. Where the map's file goes away, even a writer
  // who sets its time back must lose nothing.
  if (auto checked = check_map(stamp.settled && backup_is_hard_link); !checked)
    return checked;
  return take(prepared.size() - 1, backup_name);
}

Result<Done> Replacing::take(std::size_t i, const std::string& kept) {
  const auto taken = prepared[i].take(names[i], kept);
  if (!taken)
    return failure("write " + names[i], taken.failure());
  return Done{};
}

// Sees to it that the map has its backup name too, and that this is on the disk before the map's
// own name goes to its successor: flushing a file flushes its names as well.
Result<Done> Replacing::keep_backup() {
  const auto is_backup = holds_map(backup_name);
  if (!is_backup)
    return is_backup.failure();
  return *is_backup ? flush(backup_name) : make_backup();
}

// Whether there is a backup that holds just what the map holds.
Result<bool> Replacing::holds_map(const std::string& name) {
  if (name.empty())
    return false;
  const auto kind = kind_of(name);
  if (!kind)
    return kind.failure();
  if (*kind != MapFolder::Kind::file)
    return false;
  const auto same = folder.holds(name, replacement.was);
  if (!same)
    return failure("read " + name, same.failure());
  return *same;
}

// A second name for the map; a copy where the file system knows no second names.
Result<Done> Replacing::make_backup() {
  if (!backup_name.empty())
    if (auto moved = move_aside(backup_name); !moved)
      return moved;
  backup_name = name_of(replacement.backup);
  const std::string action = "make its backup " + backup_name;
  const auto linked = folder.link(map_name, backup_name);
  if (!linked)
    return failure(action, linked.failure());
  if (*linked) {
    backup_is_hard_link = true;
    const auto checked = check_stamp(backup_name);
    return checked ? flush(map_name) : checked;
  }
  auto written = folder.write_temporary(replacement.was);
  if (!written)
    return failure(action, written.failure());
  const auto taken = Temporary(folder, *std::move(written)).take_no_replace(backup_name);
  if (!taken)
    return failure(action, taken.failure());
  if (!*taken)
    return Failure{replacement.map, action, "the name is taken"};
  return flush(backup_name);
}

Result<Done> Replacing::move_aside(const std::string& name) {
  const auto kind = kind_of(name);
  if (!kind)
    return kind.failure();
  for (int number = first_backup_number;; ++number) {
    const std::string free = name + std::to_string(number);
    if (!folder.spelled(free).empty())
      continue;
    const auto moved = folder.rename_no_replace(name, free);
    if (!moved)
      return failure("move " + name + " aside", moved.failure());
    if (*moved)
      return *kind == MapFolder::Kind::file ? flush(free) : Done{};
  }
}

Result<Done> Replacing::flush(const std::string& name) {
  const auto flushed = folder.flush(name);
  if (!flushed)
    return failure("flush " + name, flushed.failure());
  return Done{};
}
