// The conversion run over the maps that the search has found.
#include "convert/conversion.h"

#include "convert/line_reader.h"
#include "convert/original_maps.h"
#include "convert/template_files.h"
#include "engine/numbers.h"
#include "engine/passes.h"
#include "platform/files.h"
#include "platform/path_rules.h"

#include <limits>
#include <new>

namespace {

// The name of a map's companion: the map's with the last three characters replaced.
std::string companion(const std::string& path, const char* ending) {
  const std::string_view name = filename(path);
  return std::string(name.substr(0, name.size() - 3)) + ending;
}

// A map that is being converted.
struct Map {
  OpenMap& file;
  const LineArray& galaxylines;
};

class Run {
public:
  explicit Run(Form1& form_in) : form(form_in), templates(form.files, form.edition) {}

  // Reads the current format version. Without one nothing is converted, which is reported where
  // there are maps.
  void read_baseline();

  // Converts the map `path` unless it is to stay as it is. A map that cannot be converted, for want
  // of memory too, is skipped.
  void convert_or_skip(const std::string& path);

  // Reports the maps that were skipped, if any.
  void report_skipped();

  long converted = 0;  // maps

private:
  std::string missing_version(const Failure& failure) const;
  void convert_map(const std::string& path);
  bool is_expansion() const { return form.edition == expansion_letter; }
  void skip(const Failure& failure) { skipped.push_back(failure); }
  void convert(const Map& map);
  Result<std::string> fix(const LineArray& lines);
  void put_in_place(const Map& map, std::string_view first, std::string_view result);
  void list_converted(const std::string& path);
  [[noreturn]] void stop(const Map& map, const Failure& fault, const std::string& advice = "");

  Form1& form;
  TemplateFiles templates;
  double formatver = std::numeric_limits<double>::lowest();
  std::vector<Failure> skipped;
};

void Run::read_baseline() {
  const auto version = templates.initnew();
  if (version)
    formatver = *version;
  else if (form.foundlist.size() > 1)
    report_trouble(form, "No map was converted: " + missing_version(version.failure()));
}

// Why there is no format version.
std::string Run::missing_version(const Failure& failure) const {
  if (form.edition.empty())
    return "no edition of the game is selected.";
  const auto folder = form.files.full_path(".");
  if (!failure.missing || !folder)
    return failure.text();
  return failure.path + " is missing in " + printable(*folder) +
         ". Start the program in the folder that holds its data files.";
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
    return skip({path, "convert it",
                 ends_lines_in_lf(galaxylines.text()) ? needs_cr_lf : "it has no second line"});
  templates.loadold(versiontext);
  templates.loadnew(versiontext);
  convert({**opened, galaxylines});
}

void Run::convert(const Map& map) {
  auto result = first_pass(templates.oldtemplate(), templates.newtemplate(), map.galaxylines);
  if (!result)
    stop(map, result.failure(), ": move this one elsewhere and run again for the others");
  LineArray first_lines;
  if (is_expansion() && !form.debugmode) {
    first_lines = LineArray::split(*std::move(result));
    result = fix(first_lines);
  } else if (is_expansion()) {
    result = fix(map.galaxylines);
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
  const std::string& path = map.file.path;
  Replacement replacement{map.galaxylines.text(), {}, result, ""};
  if (form.debugmode)
    replacement.companions = {{companion(path, "tst"), result}};
  else
    replacement.backup = companion(path, "old");
  if (is_expansion() && !form.debugmode)
    replacement.companions = {{companion(path, "fix"), first}};
  const auto done = replace_map(map.file, replacement);
  if (!done)
    return skip(done.failure());
  ++converted;
  list_converted(path);
}

// The map is converted, even if its name is missing in the list for want of memory.
void Run::list_converted(const std::string& path) {
  try {
    form.Text2.append(std::string(filename(path)) + "\r\n");
  } catch (const std::bad_alloc&) {
    form.trouble = true;
  }
}

// Ends the program for a template that cannot write what the map asks of it, with a message that
// ends in `advice`. The map keeps its
// content and gets its backup all the same: it is replaced by a copy of itself, so that the two are
// not hard links to one file.
void Run::stop(const Map& map, const Failure& fault, const std::string& advice) {
  const std::string& path = map.file.path;
  const std::string_view was = map.galaxylines.text();
  const std::string versiontext(version_of(map.galaxylines[1]));
  const std::string text = path + ": the map is of version \"" + versiontext +
                           "\" and cannot be converted: template " + fault.path + ": " +
                           fault.reason;
  if (!form.debugmode) {
    const auto done = replace_map(map.file, {was, {}, was, companion(path, "old")});
    if (!done)
      skip(done.failure());
  }
  try {
    report_skipped();
    report_trouble(form, printable(text) +
                             "\r\nThe map is as it was. No further map was converted" + advice +
                             ".");
  } catch (const std::bad_alloc&) {
    end_out_of_memory(form);
  }
  end_program(form);
}

void Run::report_skipped() {
  report_troubles(form, "These maps could not be converted and were left alone:", skipped);
}

}  // namespace

void fixgalaxies(Form1& form) {
  const DeferredInterrupts deferred(form.system);
  const BusyPointer busy(form.screen);
  Run run(form);
  next_stage(form);
  run.read_baseline();
  for (std::size_t i = 0; i + 1 < form.foundlist.size() && !form.system.interrupted(); ++i)
    run.convert_or_skip(form.foundlist[i]);
  run.report_skipped();
  if (form.system.interrupted())
    end_interrupted(form, run.converted);
}
