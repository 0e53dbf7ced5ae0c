// The result of an operation that can fail: its value, or a failure that must not be ignored.
#pragma once

#include <string>
#include <utility>
#include <variant>

// Why something could not be done. `text()` is the sentence that the user reads.
struct Failure {
  enum class Kind {
    other,
    missing,      // there is nothing of that name
    shortage,     // of memory, descriptors or room: it may pass
    unconfirmed,  // a flush failed: nothing that it was for may be believed or tried again
  };

  std::string path;    // the file or folder, as the program names it
  std::string action;  // what was tried, to follow "cannot": "read it", "write its backup"
  std::string reason;  // in the system's own words, or in ours where it has none
  Kind kind = Kind::other;

  bool missing() const { return kind == Kind::missing; }
  std::string text() const { return path + ": cannot " + action + ": " + reason; }
};

// The value type of operations without a result.
struct Done {};

template <class Value, class Error = Failure> class [[nodiscard]] Result {
public:
  Result(Value value) : outcome(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : outcome(std::in_place_index<1>, std::move(error)) {}

  explicit operator bool() const { return outcome.index() == 0; }

  // Only where the result holds a value.
  Value& operator*() & { return std::get<0>(outcome); }
  Value&& operator*() && { return std::get<0>(std::move(outcome)); }
  const Value& operator*() const& { return std::get<0>(outcome); }
  Value* operator->() { return &std::get<0>(outcome); }
  const Value* operator->() const { return &std::get<0>(outcome); }

  // Only where it holds none.
  const Error& failure() const { return std::get<1>(outcome); }

private:
  std::variant<Value, Error> outcome;
};
