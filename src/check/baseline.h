// What a current map looks like, line by line.
#pragma once

#include "engine/numbers.h"
#include "engine/templates.h"

#include <set>

// A baseline. The line that a map's line begins like is its kind, a number from 1. Empty lines and
// remarks of the baseline are left out.
struct Baseline : Template {
  explicit Baseline(Template file);

  std::optional<double> version;        // the current one
  std::vector<std::string_view> texts;  // sorted: by the kinds, which the empty text precedes
  std::set<std::string_view> words;     // that lines begin with

  // The current version as the names of the fix pair have it; "0" when there is none.
  std::string version_text() const { return number_text(version.value_or(0)); }

  // Whether there are lines behind the version line. Without these nothing is known of maps.
  bool shows_map() const { return order.size() > 2; }

  // The kind of a map's line; 0 when it begins like no line of the baseline.
  std::size_t kind(std::string_view line) const;

  // The kinds that the line written by an output line may have.
  std::vector<std::size_t> kinds(const OutputLine& output) const;

  // Whether a line of the kind `b` follows one of the kind `a` anywhere.
  bool follows(std::size_t a, std::size_t b) const { return following.contains({a, b}); }

  // Says which line is missing between lines of two kinds that do not follow each other, as the end
  // of a sentence about the baseline; empty when there is none. None is missing where another block
  // may begin or end.
  std::string missing(std::size_t a, std::size_t b) const;

  // Whether a line of the kind `b` may stand behind one of the kind `a`, by the indentation: in the
  // baseline it stands behind such a deep one, or a similar line stands behind that one.
  bool may_follow(std::size_t a, std::size_t b) const;

private:
  std::size_t depth_of(std::size_t kind) const;

  RadixTree index;
  std::vector<std::size_t> order;  // the kinds of the baseline's lines
  std::set<std::pair<std::size_t, std::size_t>> following;
  std::set<std::size_t> openers, closers;  // a deeper line follows, or stands before
};
