// What a current map looks like, line by line.
#pragma once

#include "engine/templates.h"

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A baseline. The line that a map's line begins like is its kind, a number from 1. Empty lines and
// remarks of the baseline are left out.
class Baseline {
public:
  explicit Baseline(LineArray lines_in);

  LineArray lines;

  // Whether there are lines behind the version line. Without these nothing is known of maps.
  bool shows_map() const { return order.size() > 2; }

  // The kind of a map's line; 0 when it begins like no line of the baseline.
  std::size_t kind(std::string_view line) const;

  // The kinds that the line written by an output line may have.
  std::set<std::size_t> kinds(const OutputLine& output) const;

  // Whether a line of the kind `b` follows one of the kind `a` anywhere.
  bool follows(std::size_t a, std::size_t b) const { return following.contains({a, b}); }

  // Says which line is missing between lines of two kinds, as the end of a sentence about the
  // baseline; empty when there is none. None is missing where another block may begin or end.
  std::string missing(std::size_t a, std::size_t b) const;

  // Whether a line of the kind `b` may stand behind one of the kind `a`, by the indentation: in the
  // baseline it stands behind such a deep one, or a similar line stands behind that one.
  bool may_follow(std::size_t a, std::size_t b) const;

  // Whether the first word of a line is the given one.
  bool has_word(std::string_view word) const { return words.contains(word); }

  // The first words of the lines that begin like a recognition line, unless one of them is like it
  // up to the word's end. The indentation is left out where the recognition line has none.
  std::set<std::string_view> words_like(std::string_view recognition) const;

  std::set<std::string, std::less<>> words;  // with which lines begin

private:
  std::size_t depth(std::size_t kind) const;
  bool is_plain(std::size_t kind) const;

  std::vector<std::string> texts{""};  // by the kinds
  PrefixIndex index;
  std::vector<std::size_t> order;  // the kinds of the baseline's lines
  std::set<std::pair<std::size_t, std::size_t>> following;
  std::set<std::size_t> openers, closers;  // a deeper line follows, or stands before
};
