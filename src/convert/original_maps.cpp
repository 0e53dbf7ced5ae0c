// The list of the game's own maps, which are never converted.
#include "convert/original_maps.h"

#include "convert/line_reader.h"
#include "platform/path_rules.h"

namespace {

constexpr char list_file[] = "original vora galaxies.txt";

// What is said of a missing file without which the list is empty.
std::string explain(const std::string& file) {
  return file + " is missing: the game's release is not checked, and the game's own maps are "
                "converted like any other.";
}

// The lines of the list in UTF-8.
LineArray read_list(Form1& form) {
  const LineArray lines = readlines_or_report(form, list_file);
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i)
    text += form.system.decode(lines[i]) + std::string(LineArray::line_end);
  return lines.text().empty() ? LineArray::empty(lines.size()) : LineArray::split(std::move(text));
}

}  // namespace

void warn_of_missing_list(Form1& form) {
  if (!form.list_problem.empty() && !form.unattended && form.foundlist.size() > 1)
    form.screen.message_box(form.list_problem);
}

void loadoriginalmaps(Form1& form) {
  const auto found = form.files.lookup(list_file, Match::files);
  if (!found)
    report_trouble(form, found.failure());
  const bool missing = found && found->empty();
  form.list_problem = missing                               ? explain(list_file)
                      : form.missingdata && !form.debugmode ? explain(target_file)
                                                            : "";
  if (!form.list_problem.empty() && form.unattended)
    form.screen.print_error(form.list_problem);
  if (!found || missing)
    form.missingdata = true;
  form.originalmaps = form.missingdata ? LineArray::empty(1) : read_list(form);
}

bool samefilename(System& system, std::string_view path, std::string_view name) {
  return filename(system.lowercase(path)) == system.lowercase(name);
}

bool is_original(const Form1& form, std::string_view path) {
  for (std::size_t i = 0; i < form.originalmaps.size(); ++i)
    if (samefilename(form.system, path, form.originalmaps[i]))
      return true;
  return false;
}
