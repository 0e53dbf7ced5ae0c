// The conversion run over the maps that the search has found.
#include "convert/conversion.h"

#include "convert/line_reader.h"
#include "convert/original_maps.h"
#include "convert/template_files.h"
#include "engine/numbers.h"
#include "engine/passes.h"
#include "platform/files.h"
#include "platform/path_rules.h"
#include "platform/printable.h"
#include "platform/replacing.h"

#include <algorithm>
#include <map>
#include <new>
#include <ranges>
#include <set>

namespace {

// The name of a map's companion: the map's with the last three characters replaced.
std::string companion(const std::string& path, const char* ending) {
  const std::string_view name = filename(path);
  return std::string(name.substr(0, name.size() - 3)) + ending;
}

bool is_unreadable(const Template& file) { return file.failure && !file.failure->missing(); }

bool is_of_version(Form1& form, const std::string& path, std::string_view version) {
  if (is_original(form, path))
    return false;
  auto text = form.files.read(path);
  const auto lines = text ? LineArray::split(*std::move(text)) : LineArray();
  return lines.size() > 1 && version_of(lines[1]) == version;
}

// That the map at `path`, of that format version as it stands in the map, cannot be converted
// because of a template. A missing file comes first.
std::string template_error(const std::string& path, std::string_view version,
                           const Failure& fault) {
  const std::string map =
      path + ": the map is of version \"" + std::string(version) + "\" and cannot be converted";
  if (fault.missing())
    return "Template " + fault.path + " is missing: " + map;
  return map + ": template " + fault.path + ": " + fault.reason;
}

// What to do with the found maps of that version, to follow "No further map was converted". Reads
// each found map once, to count them, so that none may be open.
std::string advise_to_move(Form1& form, std::string_view version) {
  const std::set<std::string> found(form.foundlist.begin(), form.foundlist.end() - 1);
  const auto count = std::ranges::count_if(found, [&](const std::string& path) {
    return !form.system.interrupted() && is_of_version(form, path, version);
  });
  if (count < 2)
    return ": move this one elsewhere and run again for the others";
  return ": " + std::to_string(count) +
         " of the found maps are of that version; move them elsewhere and run again for the others";
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
  std::string explain_no_version(const Failure& failure) const;
  bool try_to_convert(std::size_t index);
  bool convert_map(std::size_t index);
  bool convert(MapInHand map);
  bool skip(std::size_t index, Failure failure) {
    skipped.insert_or_assign(index, std::move(failure));
    return true;
  }
  bool is_expansion() const { return form.edition == expansion_letter; }
  Result<std::string> fix(const LineArray& lines);
  bool add_to_batch(MapInHand map, std::string_view first, std::string_view result);
  void commit();
  void commit_batch();
  [[noreturn]] void stop(MapInHand map, const Failure& fault, bool others = false);
  void back_up_unconverted(MapInHand map);

  Form1& form;
  TemplateFiles templates;
  ReplacementBatch batch;
  std::vector<std::size_t> in_batch;       // the maps of the batch, in order
  std::vector<std::size_t> retries;        // those to be tried again alone
  std::map<std::size_t, Failure> skipped;  // why maps failed, also those to be tried again
  double formatver = 0;                    // once `read_baseline` has read it
  long converted_before_last = 0;          // of the maps that were found before the last one
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
    while (!try_to_convert(i))
      commit();
  }
  commit();
  form.converting = false;
}

// Converts the found map number `index` unless it is to stay as it is. A map that cannot be
// converted, for want of memory too, is skipped. False when it has to wait until the batch is
// committed, and must be tried, and read, again then.
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
  if (numeric_value(version_of(galaxylines[1])) >= formatver)
    return true;
  if (!opened)
    return skip(index, opened.failure());
  if (galaxylines.size() < 2)
    return skip(index,
                {path, "convert it",
                 ends_lines_in_lf(galaxylines.text()) ? needs_cr_lf : "it has no second line"});
  return convert({index, *std::move(opened), std::move(galaxylines)});
}

bool Run::convert(MapInHand map) {
  const auto version = version_of(map.galaxylines[1]);
  const OldTemplate& oldtemplate = templates.loadold(version);
  const NewTemplate& newtemplate = templates.loadnew(version);
  auto result = first_pass(oldtemplate, newtemplate, map.galaxylines);
  if (!result)
    stop(std::move(map), result.failure(),
         !is_unreadable(oldtemplate) && !is_unreadable(newtemplate));
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
  const OldTemplate& oldtemplate = templates.loadoldfix(formatver);
  const NewTemplate& newtemplate = templates.loadnewfix(formatver);
  return fix_pass(oldtemplate, newtemplate, lines);
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
  in_batch.reserve(in_batch.size() + 1);  // what the batch has must not be missing here
  const bool alone = batch.empty();
  const auto added = batch.add(std::move(map.file), std::move(replacement));
  if (!added)
    return alone && skip(map.index, added.failure());
  in_batch.push_back(map.index);
  return true;
}

// Replaces the maps that were converted since the last time, and notes what came of them. What a
// map could not have beside the others, such as room on the disk, it gets alone.
void Run::commit() {
  commit_batch();
  for (const std::size_t index : std::exchange(retries, {})) {
    skipped.erase(index);
    try_to_convert(index);
    commit_batch();
  }
}

void Run::commit_batch() {
  const auto outcomes = batch.commit();
  const auto indexes = std::exchange(in_batch, {});
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    const std::size_t index = indexes[i];
    if (!outcomes[i]) {
      skip(index, outcomes[i].failure());
      if (outcomes.size() > 1 && outcomes[i].failure().kind == Failure::Kind::shortage)
        retries.push_back(index);
      continue;
    }
    ++converted;
    converted_before_last += index + 2 < form.foundlist.size();
    form.Text2.append(std::string(filename(form.foundlist[index])) + "\r\n");
  }
  if (!outcomes.empty())
    form.Label4.set_text(std::to_string(converted_before_last));
}

// Ends the program for a template that cannot write what the map asks of it. `others`: maps of
// other versions can be converted all the same, which the message says.
void Run::stop(MapInHand map, const Failure& fault, bool others) {
  try {
    commit_batch();
    const std::string version(version_of(map.galaxylines[1]));
    const std::string text = template_error(map.file->path, version, fault);
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
    skip(map.index, done.failure());
}

void Run::report_skipped() {
  const auto failures = std::views::values(skipped);
  report_troubles(form,
                  "1 template cannot be used:", "templates cannot be used:", templates.unusable());
  report_troubles(
      form, "1 map could not be converted and was skipped:",
      "maps could not be converted and were skipped:", {failures.begin(), failures.end()});
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
