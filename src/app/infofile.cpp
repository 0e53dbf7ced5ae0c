// The diagnostic file "info.txt" of debug mode, in the current folder.
#include "app/infofile.h"

namespace {

constexpr char infofile[] = "info.txt";

}  // namespace

void create_info(Form1& form) {
  if (form.debugmode)
    static_cast<void>(form.files.write(infofile, ""));
}

void write_info(Form1& form, const std::string& line) {
  if (form.debugmode)
    static_cast<void>(form.files.append(infofile, line + "\r\n"));
}
