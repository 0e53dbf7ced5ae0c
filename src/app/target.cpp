// The target file, and the diagnostic file of debug mode.
#include "app/target.h"

#include "convert/line_reader.h"
#include "convert/original_maps.h"
#include "platform/registry_and_folders.h"

namespace {

constexpr char infofile[] = "info.txt";

// Lines of the target file, counted from 0.
constexpr std::size_t base_release_line = 0;
constexpr std::size_t expansion_release_line = 4;
constexpr std::size_t debug_line = 6;

void report_info_failure(Form1& form, const Result<Done>& written) {
  form.info_failed = !written;
  if (!written)
    report_trouble(form, written.failure());
}

}  // namespace

void read_target(Form1& form) {
  form.targetlines = readlines_or_report(form, target_file);
  form.debugmode = form.system.lowercase(form.targetlines[debug_line]) == "debug";
  if (form.debugmode)
    form.set_caption(form.caption() + " DeBuGgInG M O D E!");
}

std::optional<std::string> required_release(Form1& form) {
  if (form.bothfound)
    return std::nullopt;
  if (first_file(form.files, target_file).empty() || form.debugmode)
    form.missingdata = true;
  if (form.missingdata)
    return std::nullopt;
  form.targetlines = readlines(form.files, target_file);
  return std::string(
      form.targetlines[form.expansiononly ? expansion_release_line : base_release_line]);
}

void create_info(Form1& form) {
  if (form.debugmode)
    report_info_failure(form, form.files.write(infofile, ""));
}

void write_info(Form1& form, const std::string& line) {
  if (form.debugmode && !form.info_failed)
    report_info_failure(form, form.files.append(infofile, line + "\r\n"));
}
