// The conversion run over the maps that the search has found.
#include "convert/conversion.h"

#include "convert/original_maps.h"
#include "convert/template_files.h"
#include "engine/numbers.h"
#include "engine/passes.h"
#include "platform/files.h"
#include "platform/path_rules.h"
#include "platform/replacing.h"

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
  std::unique_ptr<OpenMap> file;
  LineArray galaxylines;
  bool is_last;  // of those found
};

class Run {
public:
  explicit Run(Form1& form_in)
      : form(form_in), templates(form.files, form.edition), batch(form.files) {}

  // Reads the current format version. Without one nothing is converted, which is reported where
  // there are maps.
  void read_baseline();

  // Converts the found map number `index` unless it is to stay as it is. A map that cannot be
  // converted, for want of memory too, is skipped.
  void convert_or_skip(std::size_t index);

  // Replaces the maps that were converted since the last time.
  void commit();

  // Reports the maps that were skipped, if any.
  void report_skipped();

  long converted = 0;  // maps that were replaced

private:
  // A map of the batch.
  struct Pending {
    std::string path;
    bool is_last;
  };

  Result<Done> try_to_convert(std::size_t index);
  Result<Done> convert_map(std::size_t index);
  bool is_expansion() const { return form.edition == expansion_letter; }
  Result<Done> convert(Map map);
  Result<std::string> fix(const LineArray& lines);
  Result<Done> add_to_batch(Map map, std::string_view first, std::string_view result);
  void note_outcome(const Pending& map, const Result<Done>& outcome);
  [[noreturn]] void stop(Map map, const Failure& fault);

  Form1& form;
  TemplateFiles templates;
  ReplacementBatch batch;
  std::vector<Pending> pending;  // the maps of the batch
  long converted_before_last = 0;  // maps that were found before the last one
  double formatver = std::numeric_limits<double>::lowest();
  std::vector<Failure> skipped;
};

void Run::read_baseline() {
  const auto version = templates.initnew();
  if (version)
    formatver = *version;
  else if (form.foundlist.size() > 1)
    report_trouble(form, "No map was converted: " + (form.edition.empty()
                                                         ? "no edition of the game is selected."
                                                         : version.failure().text()));
}

// What a map cannot have beside others, such as their files or memory, it may have alone.
void Run::convert_or_skip(std::size_t index) {
  auto done = try_to_convert(index);
  if (!done && !batch.empty()) {
    commit();
    done = try_to_convert(index);
  }
  if (!done)
    skipped.push_back(done.failure());
  if (batch.is_full())
    commit();
}

Result<Done> Run::try_to_convert(std::size_t index) {
  try {
    return convert_map(index);
  } catch (const std::bad_alloc&) {
    return Failure{form.foundlist[index], "convert it", "the memory is not enough"};
  }
}

Result<Done> Run::convert_map(std::size_t index) {
  const std::string path = form.foundlist[index];
  form.Label4.set_text(std::to_string(converted));
  if (is_original(form, path))
    return Done{};
  auto opened = form.files.open_map(path);
  auto galaxylines = opened ? LineArray::split(std::move((*opened)->text)) : LineArray();
  const auto versiontext = version_of(galaxylines[1]);
  const double filever = numeric_value(versiontext);
  if (filever >= formatver)
    return Done{};
  if (!opened)
    return opened.failure();
  if (galaxylines.size() < 2)
    return Failure{path, "convert it", "it has no second line"};
  templates.loadold(versiontext);
  templates.loadnew(versiontext);
  const bool is_last = index + 2 == form.foundlist.size();
  return convert({*std::move(opened), std::move(galaxylines), is_last});
}

Result<Done> Run::convert(Map map) {
  auto result = first_pass(templates.oldtemplate(), templates.newtemplate(), map.galaxylines);
  LineArray first_lines;
  if (result && is_expansion() && !form.debugmode) {
    first_lines = LineArray::split(*std::move(result));
    result = fix(first_lines);
  } else if (result && is_expansion()) {
    result = fix(map.galaxylines);
  }
  if (!result)
    stop(std::move(map), result.failure());
  return add_to_batch(std::move(map), first_lines.text(), *result);
}

Result<std::string> Run::fix(const LineArray& lines) {
  templates.loadoldfix(formatver);
  templates.loadnewfix(formatver);
  return fix_pass(templates.oldtemplate(), templates.newtemplate(), lines);
}

Result<Done> Run::add_to_batch(Map map, std::string_view first, std::string_view result) {
  std::string path = map.file->path;
  Replacement replacement{std::move(map.galaxylines).release(), {}, result, ""};
  if (form.debugmode)
    replacement.companions = {{companion(path, "tst"), result}};
  else
    replacement.backup = companion(path, "old");
  if (is_expansion() && !form.debugmode)
    replacement.companions = {{companion(path, "fix"), first}};
  pending.reserve(pending.size() + 1);
  auto added = batch.add(std::move(map.file), std::move(replacement));
  if (added)
    pending.push_back({std::move(path), map.is_last});
  return added;
}

void Run::commit() {
  const auto outcomes = batch.commit();
  const auto maps = std::exchange(pending, {});
  for (std::size_t i = 0; i < maps.size(); ++i)
    note_outcome(maps[i], outcomes[i]);
  if (!maps.empty())
    form.Label4.set_text(std::to_string(converted_before_last));
}

// A map is converted even if its name is missing in the list for want of memory.
void Run::note_outcome(const Pending& map, const Result<Done>& outcome) try {
  if (!outcome)
    return skipped.push_back(outcome.failure());
  ++converted;
  converted_before_last += !map.is_last;
  form.Text2.append(std::string(filename(map.path)) + "\r\n");
} catch (const std::bad_alloc&) {
  form.trouble = true;
}

// Ends the program for a template that cannot write what the map asks of it. The map keeps its
// content and gets its backup all the same: it is replaced by a copy of itself, so that the two are
// not hard links to one file.
void Run::stop(Map map, const Failure& fault) {
  commit();
  const std::string path = map.file->path;
  const std::string versiontext(version_of(map.galaxylines[1]));
  const std::string text = path + ": the map is of version \"" + versiontext +
                           "\" and cannot be converted: template " + fault.path + ": " +
                           fault.reason;
  if (!form.debugmode) {
    ReplacementBatch alone(form.files);
    const std::string was = std::move(map.galaxylines).release();
    auto done = alone.add(std::move(map.file), {was, {}, was, companion(path, "old")});
    if (done)
      done = alone.commit().front();
    if (!done)
      skipped.push_back(done.failure());
  }
  try {
    report_skipped();
    report_trouble(form,
                   printable(text) + "\r\nThe map is as it was. No further map was converted.");
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
  Run run(form);
  next_stage(form);
  run.read_baseline();
  for (std::size_t i = 0; i + 1 < form.foundlist.size() && !form.system.interrupted(); ++i)
    run.convert_or_skip(i);
  run.commit();
  run.report_skipped();
  if (form.system.interrupted())
    end_interrupted(form, run.converted);
}
