// The list of the game's own maps, which are never converted.
#include "convert/originalmaps.h"

#include "convert/linereader.h"
#include "platform/services.h"

namespace {

constexpr char listfile[] = "original vora galaxies.txt";

}  // namespace

void loadoriginalmaps(Form1& form) {
  if (firstfile(form.files, listfile).empty())
    form.missingdata = true;
  form.originalmaps = form.missingdata ? LineArray::empty(1) : readlines(form.files, listfile);
}
