// The conversion run over the maps that the search has found.
#include "convert/conversion.h"

#include "convert/original_maps.h"
#include "convert/template_files.h"
#include "engine/numbers.h"
#include "engine/passes.h"
#include "platform/files.h"
#include "platform/path_rules.h"

#include <new>

namespace {

// A map's companion: its path with the last three characters replaced.
std::string companion(const std::string& path, const char* ending) {
  return path.substr(0, path.size() - 3) + ending;
}

// A map that is being converted.
struct Map {
  const std::string& path;
  OpenMap& file;
  const LineArray& lines;
};

class Run {
public:
  explicit Run(Form1& form_in);

  // Converts the map `path`, unless it is to stay as it is or is too large for the memory.
  void convert_or_skip(const std::string& path);

  // Tells which maps were left alone, if any.
  void report_skipped();

private:
  void convert_map(const std::string& path);
  bool is_expansion() const { return form.edition == expansion_letter; }
  void skip(const Failure& failure) { skipped.push_back(failure); }
  void convert(const Map& map);
  Result<std::string> fix(const LineArray& lines);
  void put_in_place(const Map& map, std::string_view first, std::string_view result);
  [[noreturn]] void stop(const Map& map, const Failure& fault);

  Form1& form;
  TemplateFiles templates;
  double formatver = 0;
  long converted = 0;
  std::vector<Failure> skipped;
};

Run::Run(Form1& form_in) : form(form_in), templates(form.files, form.edition) {
  const auto version = templates.initnew();
  if (version)
    formatver = *version;
  else if (form.foundlist.size() > 1)
    report_trouble(form, "No map was converted: " + (form.edition.empty()
                                                         ? "no edition of the game is selected."
                                                         : version.failure().text()));
}

void Run::convert_or_skip(const std::string& path) {
  try {
    convert_map(path);
  } catch (const std::bad_alloc&) {
    skip({path, "convert it", "the memory is not enough"});
  }
}

void Run::convert_map(const std::string& path) {
  form.Label4.set_text(std::to_string(converted));
  if (is_original(form, path))
    return;
  const auto opened = form.files.open_map(path);
  const auto galaxylines = opened ? LineArray::split(std::move((*opened)->text)) : LineArray();
  const auto versiontext = version_of(galaxylines[1]);
  const double filever = numeric_value(versiontext);
  if (filever >= formatver)
    return;
  if (!opened)
    return skip(opened.failure());
  if (galaxylines.size() < 2)
    return skip({path, "convert it", "it has no second line"});
  templates.loadold(versiontext);
  templates.loadnew(versiontext);
  convert({path, **opened, galaxylines});
}

void Run::convert(const Map& map) {
  auto result = first_pass(templates.oldtemplate(), templates.newtemplate(), map.lines);
  LineArray first_lines;
  if (result && is_expansion() && !form.debugmode) {
    first_lines = LineArray::split(*std::move(result));
    result = fix(first_lines);
  } else if (result && is_expansion()) {
    result = fix(map.lines);
  }
  if (!result)
    stop(map, result.failure());
  put_in_place(map, first_lines.text(), *result);
}

Result<std::string> Run::fix(const LineArray& lines) {
  templates.loadoldfix(formatver);
  templates.loadnewfix(formatver);
  return fix_pass(templates.oldtemplate(), templates.newtemplate(), lines);
}

void Run::put_in_place(const Map& map, std::string_view first, std::string_view result) {
  Replacement replacement{map.path, map.lines.text(), {}, ""};
  if (form.debugmode) {
    replacement.files = {{companion(map.path, "tst"), result}};
  } else {
    if (is_expansion())
      replacement.files = {{companion(map.path, "fix"), first}};
    replacement.files.push_back({map.path, result});
    replacement.backup = companion(map.path, "old");
  }
  const auto done = map.file.replace(replacement);
  if (!done)
    return skip(done.failure());
  ++converted;
  form.Text2.append(std::string(filename(map.path)) + "\r\n");
}

// Ends the program for a template that cannot write what the map asks of it. The map keeps its
// content and gets its backup all the same: it is replaced by itself, so that the two are not one
// file under two names.
void Run::stop(const Map& map, const Failure& fault) {
  const std::string_view was = map.lines.text();
  std::string text = map.path + ": the map is of version \"" +
                     std::string(version_of(map.lines[1])) +
                     "\" and cannot be converted: template " + fault.path + ": " + fault.reason;
  text = printable(text) + "\r\nThe map is as it was. No further map was converted.";
  if (!form.debugmode) {
    const auto done =
        map.file.replace({map.path, was, {{map.path, was}}, companion(map.path, "old")});
    if (!done)
      skip(done.failure());
  }
  report_skipped();
  report_trouble(form, text);
  end_program(form);
}

void Run::report_skipped() {
  report_troubles(form, "These maps could not be converted and were left alone:", skipped);
}

}  // namespace

void fixgalaxies(Form1& form) {
  Run run(form);
  next_stage(form);
  for (std::size_t i = 0; i + 1 < form.foundlist.size(); ++i)
    run.convert_or_skip(form.foundlist[i]);
  run.report_skipped();
}
