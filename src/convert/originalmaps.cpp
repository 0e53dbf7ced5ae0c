// The list of the game's own maps, which are never converted.
#include "convert/originalmaps.h"

#include "convert/linereader.h"
#include "platform/services.h"

namespace {

constexpr char list_file[] = "original vora galaxies.txt";

}  // namespace

void loadoriginalmaps(Form1& form) {
  if (first_file(form.files, list_file).empty())
    form.missingdata = true;
  form.originalmaps = form.missingdata ? LineArray::empty(1) : readlines(form.files, list_file);
}
