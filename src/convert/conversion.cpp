// The conversion run over the maps that the search has found.
#include "convert/conversion.h"

#include "convert/line_reader.h"
#include "convert/original_maps.h"
#include "convert/template_error.h"
#include "convert/template_files.h"
#include "engine/numbers.h"
#include "engine/passes.h"
#include "platform/files.h"
#include "platform/path_rules.h"
#include "platform/printable.h"
#include "platform/replacing.h"

#include <new>

namespace {

// The name of a map's companion: the map's with the last three characters replaced.
std::string companion(const std::string& path, const char* ending) {
  const std::string_view name = filename(path);
  return std::string(name.substr(0, name.size() - 3)) + ending;
}

bool is_unreadable(const Template& file) { return file.failure && !file.failure->missing(); }

bool is_shortage(const Result<Done>& outcome) {
  return !outcome && outcome.failure().kind == Failure::Kind::shortage;
}

// A map that is being converted.
struct MapInHand {
  std::size_t index;  // in `foundlist`
  std::unique_ptr<OpenMap> file;
  LineArray galaxylines;
};

class Run {
public:
  explicit Run(Form1& form_in)
      : form(form_in), templates(form.files, form.edition), batch(form.files) {}

  // Reads the current format version. False when there is none: then nothing is converted, which is
  // reported where there are maps.
  bool read_baseline();

  // Converts the found maps, up to the first that begins after an interrupt.
  void convert_found();

  // Reports the maps that were skipped and the templates that cannot be used, if any.
  void report_skipped();

  long converted = 0;  // maps that were replaced

private:
  // A map of the batch, or one that was skipped since the last commit.
  struct Pending {
    std::size_t index;
    Result<Done> outcome;  // a failure when it is not in the batch
  };

  std::string explain_no_version(const Failure& failure) const;
  void convert_or_skip(std::size_t index);
  bool try_to_convert(std::size_t index);
  bool convert_map(std::size_t index);
  bool convert(MapInHand map);
  bool skip(std::size_t index, Failure failure) {
    pending.push_back({index, std::move(failure)});
    return true;
  }
  bool is_expansion() const { return form.edition == expansion_letter; }
  Result<std::string> fix(const LineArray& lines);
  bool add_to_batch(MapInHand map, std::string_view first, std::string_view result);
  void commit();
  void commit_batch();
  void note_outcome(const Pending& map);
  [[noreturn]] void stop(MapInHand map, const Failure& fault, bool others = false);
  void back_up_unconverted(MapInHand map);

  Form1& form;
  TemplateFiles templates;
  ReplacementBatch batch;
  std::vector<Pending> pending;
  std::vector<Pending> retries;    // maps to be tried again alone, and why they failed
  double formatver = 0;            // once `read_baseline` has read it
  long converted_before_last = 0;  // of the maps that were found before the last one
  std::vector<Failure> skipped;
};

bool Run::read_baseline() {
  const auto version = templates.initnew();
  if (version) {
    formatver = *version;
  } else if (form.foundlist.size() > 1) {
    form.Label4.set_text("0");
    report_trouble(form, "No map was converted: " + explain_no_version(version.failure()));
  }
  return bool(version);
}

std::string Run::explain_no_version(const Failure& failure) const {
  if (form.edition.empty())
    return "no edition of the game is selected.";
  const auto folder = form.files.full_path(".");
  if (!failure.missing() || !folder)
    return printable(failure.text());
  return failure.path + " is missing in " + printable(*folder) + ". " +
         advise_folder(form.system, failure.path);
}

void Run::convert_found() {
  const DeferredInterrupts deferred(form.system);
  const BusyPointer busy(form.screen);
  form.converting = true;
  for (std::size_t i = 0; i + 1 < form.foundlist.size() && !form.system.interrupted(); ++i) {
    form.screen.show_alive();
    convert_or_skip(i);
  }
  commit();
  form.converting = false;
}

// Converts the found map number `index` unless it is to stay as it is. A map that cannot be
// converted, for want of memory too, is skipped. One may have to wait until the batch is committed,
// and is read again then.
void Run::convert_or_skip(std::size_t index) {
  while (!try_to_convert(index))
    commit();
}

// False when the map must be tried again after a commit.
bool Run::try_to_convert(std::size_t index) {
  try {
    return convert_map(index);
  } catch (const std::bad_alloc&) {
    if (!batch.empty())
      return false;
    return skip(index, {form.foundlist[index], "convert it", "the memory is not enough"});
  }
}

bool Run::convert_map(std::size_t index) {
  const std::string path = form.foundlist[index];
  form.Label4.set_text(std::to_string(converted));
  if (is_original(form, path))
    return true;
  auto opened = form.files.open_map(path);
  if (opened && !batch.has_room((*opened)->text.size()))
    return false;
  auto galaxylines = opened ? LineArray::split(std::move((*opened)->text)) : LineArray();
  const auto versiontext = version_of(galaxylines[1]);
  const double filever = numeric_value(versiontext);
  if (filever >= formatver)
    return true;
  if (!opened)
    return skip(index, opened.failure());
  if (galaxylines.size() < 2)
    return skip(index,
                {path, "convert it",
                 ends_lines_in_lf(galaxylines.text()) ? needs_cr_lf : "it has no second line"});
  templates.loadold(versiontext);
  templates.loadnew(versiontext);
  return convert({index, *std::move(opened), std::move(galaxylines)});
}

bool Run::convert(MapInHand map) {
  auto result = first_pass(templates.oldtemplate(), templates.newtemplate(), map.galaxylines);
  if (!result)
    stop(std::move(map), result.failure(),
         !is_unreadable(templates.oldtemplate()) && !is_unreadable(templates.newtemplate()));
  LineArray first_lines;
  if (is_expansion() && !form.debugmode) {
    first_lines = LineArray::split(*std::move(result));
    result = fix(first_lines);
  } else if (is_expansion()) {
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

bool Run::add_to_batch(MapInHand map, std::string_view first, std::string_view result) {
  const std::string& path = map.file->path;
  Replacement replacement{std::move(map.galaxylines).release(), {}, result, ""};
  if (form.debugmode)
    replacement.companions = {{companion(path, "tst"), result}};
  else
    replacement.backup = companion(path, "old");
  if (is_expansion() && !form.debugmode)
    replacement.companions = {{companion(path, "fix"), first}};
  pending.reserve(pending.size() + 1);  // what the batch has must not be missing here
  const bool alone = batch.empty();
  const auto added = batch.add(std::move(map.file), std::move(replacement));
  if (!added && !alone)
    return false;
  pending.push_back({map.index, added});
  return true;
}

// Replaces the maps that were converted since the last time, and notes what came of them. What a
// map could not have beside the others, such as room on the disk, it gets alone.
void Run::commit() {
  commit_batch();
  while (!retries.empty()) {
    const std::size_t index = retries.front().index;
    retries.erase(retries.begin());
    try_to_convert(index);
    commit_batch();
  }
}

void Run::commit_batch() {
  if (pending.empty())
    return;
  auto outcomes = batch.commit();
  auto next = outcomes.begin();
  for (Pending& map : std::exchange(pending, {})) {
    const bool in_batch = bool(map.outcome);
    if (in_batch)
      map.outcome = std::move(*next++);
    if (in_batch && outcomes.size() > 1 && is_shortage(map.outcome))
      retries.push_back(std::move(map));
    else
      note_outcome(map);
  }
  form.Label4.set_text(std::to_string(converted_before_last));
}

void Run::note_outcome(const Pending& map) {
  if (!map.outcome)
    return skipped.push_back(map.outcome.failure());
  ++converted;
  converted_before_last += map.index + 2 < form.foundlist.size();
  form.Text2.append(std::string(filename(form.foundlist[map.index])) + "\r\n");
}

// Ends the program for a template that cannot write what the map asks of it. `others`: maps of
// other versions can be converted all the same, which the message says.
void Run::stop(MapInHand map, const Failure& fault, bool others) {
  try {
    commit_batch();
    for (const Pending& retry : std::exchange(retries, {}))
      note_outcome(retry);
    const std::string version(version_of(map.galaxylines[1]));
    const std::string text = template_error(form, map.file->path, version, fault);
    if (!form.debugmode)
      back_up_unconverted(std::move(map));
    form.system.defer_interrupts(false);  // a signal may end the wait for an answer
    report_skipped();
    report_trouble(form, printable(text) +
                             "\r\nThe map is as it was. No further map was converted" +
                             (others ? advise_to_move(form, version) : "") + ".");
  } catch (const std::bad_alloc&) {
    end_out_of_memory(form);
  }
  end_program(form);
}

// The map keeps its content and gets its backup all the same: it is replaced by a copy of itself,
// so that the two are not hard links to one file.
void Run::back_up_unconverted(MapInHand map) {
  const std::string backup = companion(map.file->path, "old");
  const std::string was = std::move(map.galaxylines).release();
  auto done = batch.add(std::move(map.file), {was, {}, was, backup});
  if (done)
    done = batch.commit().front();
  if (!done)
    skipped.push_back(done.failure());
}

void Run::report_skipped() {
  report_troubles(form,
                  "1 template cannot be used:", "templates cannot be used:", templates.unusable());
  report_troubles(form, "1 map could not be converted and was skipped:",
                  "maps could not be converted and were skipped:", skipped);
}

}  // namespace

void fixgalaxies(Form1& form) {
  Run run(form);
  next_stage(form);
  if (!run.read_baseline())
    return;
  run.convert_found();
  run.report_skipped();
  if (form.system.interrupted())
    end_interrupted(form, run.converted);
}
