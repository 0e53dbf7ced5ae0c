// The conversion run over the maps that the search has found.
#include "convert/conversion.h"

#include "convert/matching.h"
#include "convert/passes.h"
#include "convert/templates.h"
#include "form/linearray.h"
#include "form/text.h"
#include "platform/files.h"

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
  explicit Run(Form1& itsform);

  // Converts the map `path`, unless it is to stay as it is or is too large for the memory.
  void trytotake(const std::string& path);

  // Tells which maps were left alone, if any.
  void tellleftalone();

private:
  void take(const std::string& path);
  bool isexpansion() const { return form.edition == expansionletter; }
  bool isoriginal(const std::string& path) const;
  void leavealone(const Failure& failure) { leftalone.push_back(failure); }
  void convert(const Map& map);
  Result<std::string, TemplateError> fix(const LineArray& lines);
  void putinplace(const Map& map, std::string_view first, std::string_view result);
  [[noreturn]] void stop(const Map& map, const TemplateError& error);

  Form1& form;
  Templates templates;
  double formatver = 0;
  long converted = 0;
  std::vector<Failure> leftalone;
};

Run::Run(Form1& itsform) : form(itsform), templates(form.files, form.edition) {
  const auto version = templates.initnew();
  if (version)
    formatver = *version;
  else if (form.foundlist.size() > 1)
    telltrouble(form, "No map was converted: " + (form.edition.empty()
                                                      ? "no edition of the game is selected."
                                                      : version.failure().text()));
}

bool Run::isoriginal(const std::string& path) const {
  for (std::size_t i = 0; i < form.originalmaps.size(); ++i)
    if (samefilename(form.system, path, form.originalmaps[i]))
      return true;
  return false;
}

void Run::trytotake(const std::string& path) {
  try {
    take(path);
  } catch (const std::bad_alloc&) {
    leavealone({path, "convert it", "the memory is not enough"});
  }
}

void Run::take(const std::string& path) {
  form.Label4.settext(std::to_string(converted));
  if (isoriginal(path))
    return;
  const auto opened = form.files.openmap(path);
  const auto galaxylines = opened ? LineArray::split(std::move((*opened)->text)) : LineArray();
  const auto versiontext = versionof(galaxylines[1]);
  if (numericvalue(versiontext) >= formatver)
    return;
  if (!opened)
    return leavealone(opened.failure());
  if (galaxylines.size() < 2)
    return leavealone({path, "convert it", "it has no second line"});
  templates.loadold(versiontext);
  templates.loadnew(versiontext);
  convert({path, **opened, galaxylines});
}

void Run::convert(const Map& map) {
  auto result = firstpass(templates.oldtemplate(), templates.newtemplate(), map.lines);
  LineArray firstlines;
  if (result && isexpansion() && !form.debugmode) {
    firstlines = LineArray::split(*std::move(result));
    result = fix(firstlines);
  } else if (result && isexpansion()) {
    result = fix(map.lines);
  }
  if (!result)
    stop(map, result.failure());
  putinplace(map, firstlines.text(), *result);
}

Result<std::string, TemplateError> Run::fix(const LineArray& lines) {
  templates.loadoldfix(formatver);
  templates.loadnewfix(formatver);
  return fixpass(templates.oldtemplate(), templates.newtemplate(), lines);
}

void Run::putinplace(const Map& map, std::string_view first, std::string_view result) {
  Replacement replacement{map.path, map.lines.text(), {}, ""};
  if (form.debugmode) {
    replacement.files = {{companion(map.path, "tst"), result}};
  } else {
    if (isexpansion())
      replacement.files = {{companion(map.path, "fix"), first}};
    replacement.files.push_back({map.path, result});
    replacement.backup = companion(map.path, "old");
  }
  const auto done = map.file.replace(replacement);
  if (!done)
    return leavealone(done.failure());
  ++converted;
  form.Text2.append(std::string(filename(map.path)) + "\r\n");
}

// Ends the program for a template that cannot write what the map asks of it. The map keeps its
// content and gets its backup all the same: it is replaced by itself, so that the two are not one
// file under two names.
void Run::stop(const Map& map, const TemplateError& error) {
  const std::string_view was = map.lines.text();
  std::string text = map.path + ": the map is of version \"" +
                     std::string(versionof(map.lines[1])) +
                     "\" and cannot be converted: template " + error.filename + ": " + error.what;
  if (!error.header.empty())
    text += ": " + error.header;
  text = printable(text) + "\r\nThe map is as it was. No further map was converted.";
  if (!form.debugmode) {
    const auto done =
        map.file.replace({map.path, was, {{map.path, was}}, companion(map.path, "old")});
    if (!done)
      leavealone(done.failure());
  }
  tellleftalone();
  telltrouble(form, text);
  endprogram(form);
}

void Run::tellleftalone() {
  telltroubles(form, "These maps could not be converted and were left alone:", leftalone);
}

}  // namespace

void fixgalaxies(Form1& form) {
  Run run(form);
  nextstage(form);
  for (std::size_t i = 0; i + 1 < form.foundlist.size(); ++i)
    run.trytotake(form.foundlist[i]);
  run.tellleftalone();
}
