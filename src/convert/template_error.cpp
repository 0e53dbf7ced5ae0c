// What is said of a map that ends a run because of a template.
#include "convert/template_error.h"

#include "convert/original_maps.h"
#include "engine/templates.h"

#include <set>

namespace {

bool is_missing(Form1& form, const std::string& file) {
  const auto name = form.files.lookup(file, Match::files);
  return name && name->empty();
}

bool is_of_version(Form1& form, const std::string& path, std::string_view version) {
  if (is_original(form, path))
    return false;
  auto text = form.files.read(path);
  const auto lines = text ? LineArray::split(*std::move(text)) : LineArray();
  return lines.size() > 1 && version_of(lines[1]) == version;
}

}  // namespace

std::string template_error(Form1& form, const std::string& path, std::string_view version,
                           const Failure& fault) {
  const std::string map =
      path + ": the map is of version \"" + std::string(version) + "\" and cannot be converted";
  if (is_missing(form, fault.path))
    return "Template " + fault.path + " is missing: " + map;
  return map + ": template " + fault.path + ": " + fault.reason;
}

std::string advise_to_move(Form1& form, std::string_view version) {
  std::set<std::string> maps;  // both search roots may be one folder
  for (std::size_t i = 0; i + 1 < form.foundlist.size() && !form.system.interrupted(); ++i)
    if (is_of_version(form, form.foundlist[i], version))
      maps.insert(form.foundlist[i]);
  if (maps.size() < 2)
    return ": move this one elsewhere and run again for the others";
  return ": " + std::to_string(maps.size()) +
         " of the found maps are of that version; move them elsewhere and run again for the others";
}
