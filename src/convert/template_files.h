// Reads the structure templates that a conversion run needs from their files.
#pragma once

#include "engine/templates.h"
#include "platform/files.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

// The templates of one conversion run. Each call reads its file again; the template is indexed
// again only when the file's bytes have changed. A template is valid until its file is read again.
class TemplateFiles {
public:
  // The file names begin with the edition's letter.
  TemplateFiles(Files& files_in, std::string letter)
      : files(files_in), edition(std::move(letter)) {}

  // A template for the format version `ver`, as it stands in the map.
  const OldTemplate& loadold(std::string_view ver);
  const NewTemplate& loadnew(std::string_view ver);

  // A template of the expansion's fix pass.
  const OldTemplate& loadoldfix(double ver);
  const NewTemplate& loadnewfix(double ver);

  // Reads the current format version from the baseline. Fails when the baseline is missing or
  // cannot be read, and when its second line does not end in a number.
  Result<double> initnew();

  // The loaded templates whose lines end in LF: each is read as one line, and so converts nothing.
  const std::vector<Failure>& unusable() const { return unusable_templates; }

private:
  // The template of that file in `loaded`, indexed again if the file has changed.
  template <class Kind, class Index>
  const Kind& load(std::map<std::string, Kind>& loaded, std::string filename, Index index);

  Files& files;
  std::string edition;
  std::map<std::string, OldTemplate> loaded_old;
  std::map<std::string, NewTemplate> loaded_new;
  std::vector<Failure> unusable_templates;
};
