// The scripting host's shell object, through which the registry records of the game are read.
#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

#include <windows.h>

#include <oaidl.h>

// COM on this thread, for as long as the object lives.
class ComLibrary {
public:
  ComLibrary() : ready(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
  ComLibrary(const ComLibrary&) = delete;
  ComLibrary& operator=(const ComLibrary&) = delete;
  ~ComLibrary() {
    if (ready)
      CoUninitialize();
  }

private:
  const bool ready;
};

// A value of any type that a method takes or returns.
class Variant {
public:
  Variant() { VariantInit(&value); }
  explicit Variant(const std::string& text);
  Variant(Variant&& other) noexcept : value(other.value) { VariantInit(&other.value); }
  Variant& operator=(Variant&&) = delete;
  ~Variant() { VariantClear(&value); }

  const VARIANT& get() const { return value; }
  VARIANT* out() { return &value; }

  // A text as it is, a number in decimal; nullopt for any other type.
  std::optional<std::string> text() const;

private:
  VARIANT value;
};

class ScriptShell {
public:
  // Creates a new "WScript.Shell" object; nullopt when the system has none.
  static std::optional<ScriptShell> create();

  // Calls a method with text arguments; nullopt when it raises an error.
  std::optional<Variant> call(const wchar_t* method,
                              std::initializer_list<std::string> arguments) const;

private:
  struct Release {
    void operator()(IDispatch* object) const { object->Release(); }
  };

  explicit ScriptShell(IDispatch* created) : object(created) {}

  std::unique_ptr<IDispatch, Release> object;
};
