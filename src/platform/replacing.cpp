// How maps are replaced together by their converted selves so that no instant is without a map.
#include "platform/replacing.h"

#include "platform/map_replacement.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr std::size_t most_maps = 64;         // in a batch
constexpr std::size_t most_bytes = 16 << 20;  // of their content

}  // namespace

ReplacementBatch::ReplacementBatch(Files& files_in)
    : files(files_in), most(std::min(most_maps, files.most_open_maps())) {}

ReplacementBatch::~ReplacementBatch() = default;

bool ReplacementBatch::has_room(std::size_t size) const {
  return empty() || (maps.size() < most && bytes + size <= most_bytes);
}

Result<Done> ReplacementBatch::add(std::unique_ptr<OpenMap> map, Replacement replacement) {
  auto replacing = std::make_unique<MapReplacement>(std::move(map), std::move(replacement.was),
                                                    std::move(replacement.backup));
  replacing->run_step([&] { return replacing->lock(); });
  if (const auto failed = failed_disks.find(replacing->device()); failed != failed_disks.end())
    replacing->fail(
        {replacing->open_map().path, "convert it", failed->second, Failure::Kind::unconfirmed});
  const auto conflicts = [&](const auto& other) { return other->conflicts_with(*replacing); };
  if (replacing->outcome && std::ranges::any_of(maps, conflicts))
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
  constexpr Result<Done> (MapReplacement::* steps[])() = {
      &MapReplacement::check_map,         &MapReplacement::place_companions,
      &MapReplacement::move_older_backup, &MapReplacement::make_backup,
      &MapReplacement::place_backup,      &MapReplacement::replace,
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
  for (const auto& replacing : flushed)
    std::ranges::move(std::exchange(replacing->unflushed, {}), std::back_inserter(unflushed));
  if (unflushed.empty())
    return;
  files.flush(unflushed);
  for (const Unflushed& file : unflushed)
    if (!file.flushed)
      fail_unflushed(flushed, file);
}

// The system reports a failed write once, to whoever flushes first: what it says of the other files
// of that file system is worth nothing.
void ReplacementBatch::fail_unflushed(const Maps& flushed, const Unflushed& file) {
  MapReplacement& owner = **std::ranges::find_if(
      flushed, [&](const auto& replacing) { return &replacing->open_map() == &file.map; });
  const Failure& failure = file.flushed.failure();
  if (failure.kind != Failure::Kind::unconfirmed)
    return owner.fail(
        {failure.path, "write " + owner.shown(file.what), failure.reason, failure.kind});
  const auto unconfirmed = [&](const std::string& what) {
    return "the disk did not confirm that " + what + " is written: " + failure.reason;
  };
  owner.fail({failure.path, "convert it", unconfirmed(owner.shown(file.what)), failure.kind});
  const bool is_map = file.what == file.map.name;
  const std::string reason = unconfirmed(is_map ? failure.path : file.what + " of " + failure.path);
  for (const auto& other : flushed)
    if (other->device() == owner.device())
      other->fail({other->open_map().path, "convert it", reason, failure.kind});
  failed_disks.try_emplace(owner.device(), reason);
}
