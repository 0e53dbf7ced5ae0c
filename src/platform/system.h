// What the program asks of the operating system apart from files; each machine implements this
// interface.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The values of the platform's version query that the program uses (OSVERSIONINFOA).
struct OsVersion {
  static constexpr std::uint32_t nt_family = 2;  // VER_PLATFORM_WIN32_NT

  std::uint32_t platform;  // 0 Win32s, 1 the 9x family, 2 the NT family
  std::uint32_t major;
  std::uint32_t minor;
};

// The two product version fields of VS_FIXEDFILEINFO: dwProductVersionMS and dwProductVersionLS.
struct ProductVersion {
  std::uint32_t high;
  std::uint32_t low;
};

// The special folders that the program asks for, by their CSIDL values.
struct Csidl {
  static constexpr std::uint32_t local_app_data = 0x1C;
  static constexpr std::uint32_t documents = 0x05;  // CSIDL_PERSONAL
  static constexpr std::uint32_t create = 0x8000;   // CSIDL_FLAG_CREATE, with either
};

// The answer of SHGetFolderPath: its status code, and the folder when that is `ok`.
struct FolderPath {
  static constexpr std::uint32_t ok = 0;                           // S_OK
  static constexpr std::uint32_t does_not_exist = 1;               // S_FALSE
  static constexpr std::uint32_t invalid_identifier = 0x80070057;  // E_INVALIDARG
  static constexpr std::uint32_t failed = 0x80004005;              // E_FAIL

  std::uint32_t status;
  std::string path;
};

class System {
public:
  virtual ~System() = default;

  // The registry as the scripting host's shell object sees it. A value path is the root key spelled
  // out, the key and the value's name, separated by "\". Reading returns the value as text (a
  // number in decimal, %NAME% expanded if the value's type asks for it), nullopt when it is missing
  // or of another type; the other two return whether they succeeded.
  virtual std::optional<std::string> reg_read(const std::string& value_path) = 0;
  virtual bool reg_write(const std::string& value_path, const std::string& data,
                         const std::string& type) = 0;
  virtual bool reg_delete(const std::string& value_path) = 0;

  // Why the registry has no record of `subject` ("the game"), in one line that names the machine;
  // empty where there is only one machine.
  virtual std::string explain_unregistered(const std::string& /*subject*/) { return ""; }

  // The folder that the machine is kept in, as the system names it; empty where it is the computer
  // itself.
  virtual std::string machine_folder() { return ""; }

  // The folder in which the installed program has this data file, as the system names it; empty if
  // there is none.
  virtual std::string installed_folder(const std::string& /*file*/) { return ""; }

  // Where the program's usage is described, as a user would look it up.
  virtual std::string manual() { return ""; }

  // Why the user's part of the registry cannot be read, in one line that names the machine; empty
  // if it can. Only that of a machine in a folder can be unreadable.
  virtual std::string explain_unread_user() { return ""; }

  // An environment variable's value, empty when it is not set.
  virtual std::string environment(const std::string& name) = 0;

  // The version query; nullopt when it fails.
  virtual std::optional<OsVersion> os_version() = 0;

  // The folder of a CSIDL value, which may ask for its creation.
  virtual FolderPath folder_path(std::uint32_t csidl) = 0;

  // The product version in an executable's version resource; nullopt when that is missing or
  // malformed.
  virtual std::optional<ProductVersion> product_version(const std::string& path) = 0;

  // The machine's drives in order, each a letter and a colon.
  virtual std::vector<std::string> drives() = 0;

  // The folder that holds the program's executable, without "\" at the end except at a drive root.
  virtual std::string app_folder() = 0;

  // The command line without the program's own name, as one text.
  virtual std::string argument_text() = 0;

  // While `on`, the user's request to end the process (Ctrl-C, the end of the session) does not end
  // it but makes `interrupted` true; a second request ends it. A machine without such requests does
  // nothing.
  virtual void defer_interrupts(bool on) { static_cast<void>(on); }
  virtual bool interrupted() { return false; }

  // Bytes of a text file as UTF-8: as they are where they are UTF-8, else as characters of the
  // machine's code page.
  virtual std::string decode(std::string_view bytes) = 0;

  // `text` with its letters lowered by the platform's ordinary case mapping.
  virtual std::string lowercase(std::string_view text) = 0;
};

// Defers interrupts for as long as it lives.
class DeferredInterrupts {
public:
  explicit DeferredInterrupts(System& system_in) : system(system_in) {
    system.defer_interrupts(true);
  }
  DeferredInterrupts(const DeferredInterrupts&) = delete;
  DeferredInterrupts& operator=(const DeferredInterrupts&) = delete;
  ~DeferredInterrupts() { system.defer_interrupts(false); }

private:
  System& system;
};
