// The replacement of one map, step by step.
#pragma once

#include "platform/open_map.h"
#include "platform/replacing.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

// A replacement in progress: its steps in the order in which they are taken. What a step leaves
// unflushed is flushed before the next one.
class MapReplacement {
public:
  MapReplacement(std::unique_ptr<OpenMap> map_in, std::string was_in, std::string backup_in)
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

  // What a step has left unflushed.
  std::vector<Unflushed> unflushed;

  // Ends the replacement, if it has not ended, and undoes what can be undone.
  void fail(Failure failure);

  bool conflicts_with(const MapReplacement& other) const {
    return state.same_file(other.state) || folded == other.folded;
  }
  std::uint64_t device() const { return state.device; }
  std::size_t size() const { return was.size(); }
  // How a failure names an entry: the map's own path stands before it.
  std::string shown(const std::string& name) const { return name == map.name ? "it" : name; }
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
  Result<Done> compare_map();
  Result<OpenMap::FileState> own_state();
  Result<Done> check_unchanged(const std::string& name, const OpenMap::FileState& before,
                               Failure changed);
  Result<bool> holds(const std::string& name, std::string_view content);
  Result<Done> move_aside(OpenMap::Kind kind);
  bool is_placeholder(const std::string& name);
  bool is_map(const std::string& name);
  bool is_own_backup(const OpenMap::FileState& now) const {
    return backup_is_hard_link ? now.same_file(state) : now == backup_state;
  }
  Result<Done> write_copy();
  Result<Done> check_made(const std::string& name);
  Result<Done> check_backup();
  Result<Done> place(Prepared& file, const std::string& kept);
  Result<OpenMap::Kind> kind_of(const std::string& name);
  Result<Done> note_unflushed(const std::string& name, const std::string& what);
  std::string take_back_backup();
  std::string backup_action() const { return "make its backup " + backup; }
  Failure failure(std::string reason) const { return {map.path, "convert it", std::move(reason)}; }
  Failure changed() const { return failure("it has changed since it was read"); }
  Failure older_backup_changed() const {
    return failure("its older backup " + older_backup + " has changed");
  }

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
  OpenMap::FileState older_state{};     // of that one
  std::optional<Temporary> made;        // the new backup, before it gets its name
  bool placed = false;                  // it has got its name
  bool backup_is_hard_link = false;     // to the map's own file
  OpenMap::FileState backup_state{};    // of a backup that is no hard link, when it was compared
};
