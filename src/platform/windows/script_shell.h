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

class ScriptShell {
public:
  // Creates a new "WScript.Shell" object; nullopt when the system has none.
  static std::optional<ScriptShell> create();

  // Calls a method with text arguments. Its result: a text as it is, a number in decimal, the empty
  // text for none; nullopt for one of another type, and when the method raises an error.
  std::optional<std::string> call(const wchar_t* method,
                                  std::initializer_list<std::string> arguments) const;

private:
  struct Release {
    void operator()(IDispatch* object) const { object->Release(); }
  };

  explicit ScriptShell(IDispatch* created) : object(created) {}

  std::unique_ptr<IDispatch, Release> object;
};
