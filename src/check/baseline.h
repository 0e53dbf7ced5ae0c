// What a current map looks like, line by line.
#pragma once

#include "engine/templates.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

// A baseline. The line that a map's line begins like is its kind, a number from 1. Empty lines and
// remarks of the baseline are left out.
struct Baseline : Template {
  Baseline(std::string filename_in, Result<std::string> text);

  std::optional<double> version;  // the current one

  // Whether there are lines behind the version line. Without these nothing is known of maps.
  bool shows_map() const { return order.size() > 2; }

  // The kind of a map's line; 0 when it begins like no line of the baseline.
  std::size_t kind(std::string_view line) const;

  // The kinds that the line written by an output line may have.
  std::vector<std::size_t> kinds(const OutputLine& output) const;

  // Whether a line of the kind `b` follows one of the kind `a` anywhere.
  bool follows(std::size_t a, std::size_t b) const { return following.contains({a, b}); }

  // Says which line is missing between lines of two kinds, as the end of a sentence about the
  // baseline; empty when there is none. None is missing where another block may begin or end.
  std::string missing(std::size_t a, std::size_t b) const;

  // Whether a line of the kind `b` may stand behind one of the kind `a`, by the indentation: in the
  // baseline it stands behind such a deep one, or a similar line stands behind that one.
  bool may_follow(std::size_t a, std::size_t b) const;

  // Whether a line begins with that word, and the word that differs from it in capital letters
  // alone; empty if there is none.
  bool has_word(std::string_view word) const { return words.contains(word); }
  std::string_view misspelt(std::string_view word) const;

  // Whether a line begins with that text, its indentation included.
  bool has_start(std::string_view start) const;

  // The first words of the lines that begin like a recognition line, unless one of them is like it
  // up to the word's end. The indentation is left out where the recognition line has none.
  std::set<std::string_view> words_like(std::string_view recognition) const;

private:
  void add_order();
  std::size_t depth_of(std::size_t kind) const;

  std::vector<std::string_view> texts;        // sorted: by the kinds, which the empty text precedes
  std::vector<std::string_view> unindenteds;  // the texts without indentation, sorted
  std::set<std::string_view> words;
  std::map<std::string, std::string_view> spellings;  // the words by themselves in lower case
  RadixTree index;
  std::vector<std::size_t> order;                // the kinds of the baseline's lines
  std::vector<std::vector<std::size_t>> places;  // in the order, by the kinds
  std::vector<std::size_t> bends{0};  // before each place: lines at which the indentation changes
  std::set<std::pair<std::size_t, std::size_t>> following;
  std::set<std::pair<std::size_t, std::size_t>> behind_depth;  // a depth, and a kind behind it
  std::set<std::tuple<std::size_t, std::size_t, bool>> before_depth;  // and if a closer follows
  std::set<std::size_t> closers;                                      // a deeper line stands before
};
