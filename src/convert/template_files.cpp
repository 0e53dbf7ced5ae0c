// Reads the structure templates that a conversion run needs from their files.
#include "convert/template_files.h"

#include "convert/line_reader.h"
#include "engine/numbers.h"

template <class Kind, class Index>
const Kind& TemplateFiles::load(std::map<std::string, Kind>& loaded, std::string filename,
                                Index index) {
  auto text = files.read(filename);
  const auto before = loaded.find(filename);
  const bool same = before != loaded.end() && bool(text) == !before->second.failure &&
                    (!text || *text == before->second.lines.text());
  if (same)
    return before->second;
  if (text && ends_lines_in_lf(*text))
    unusable_templates.push_back({filename, "use it", needs_cr_lf});
  Kind made = index(filename, std::move(text));
  return loaded[std::move(filename)] = std::move(made);
}

const OldTemplate& TemplateFiles::loadold(std::string_view ver) {
  return load(loaded_old, edition + "oldstruct" + std::string(ver) + ".txt", index_old);
}

const NewTemplate& TemplateFiles::loadnew(std::string_view ver) {
  return load(loaded_new, edition + "newstruct" + std::string(ver) + ".txt", index_new);
}

const OldTemplate& TemplateFiles::loadoldfix(double ver) {
  return loadold("fix" + number_text(ver));
}

const NewTemplate& TemplateFiles::loadnewfix(double ver) {
  return loadnew("fix" + number_text(ver));
}

Result<double> TemplateFiles::initnew() {
  const std::string filename = edition + "newstruct0.txt";
  const auto lines = read_text(files, filename);
  if (!lines)
    return lines.failure();
  if (ends_lines_in_lf(lines->text()))
    return Failure{filename, "use it", needs_cr_lf};
  const auto version = version_of((*lines)[1]);
  if (!has_number(version))
    return Failure{filename, "read it", "its second line does not end in a format version"};
  return numeric_value(version);
}
