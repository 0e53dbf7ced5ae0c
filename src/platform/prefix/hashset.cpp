// A set of hashes that takes some 9 to 18 bytes for each.
#include "platform/prefix/hashset.h"

#include <algorithm>
#include <bit>
#include <random>
#include <utility>

// Hashes are spread over the slots in each process in another way: who can choose what is hashed
// must not be able to choose where it goes.
std::size_t HashSet::find(std::size_t hash) const {
  static const std::size_t multiplier = [] {
    std::random_device random;
    return (std::size_t{random()} << 32 | random()) | 1;
  }();
  std::size_t at = (hash * multiplier) >> std::countl_zero(slots.size() - 1);
  while (slots[at] != 0 && slots[at] != hash)
    at = (at + 1) % slots.size();
  return at;
}

bool HashSet::contains(std::size_t hash) const {
  return slots[find(std::max<std::size_t>(hash, 1))] != 0;
}

void HashSet::insert(std::size_t hash) {
  hash = std::max<std::size_t>(hash, 1);
  if (8 * (taken + 1) > 7 * slots.size()) {
    const auto old = std::exchange(slots, std::vector<std::size_t>(2 * slots.size()));
    for (const std::size_t kept : old)
      if (kept != 0)
        slots[find(kept)] = kept;
  }
  std::size_t& slot = slots[find(hash)];
  taken += slot == 0;
  slot = hash;
}
