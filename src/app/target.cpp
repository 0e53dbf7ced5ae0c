// The target file: which release of the game the program is for, and whether debug mode is on.
#include "app/target.h"

#include "convert/linereader.h"
#include "platform/services.h"

namespace {

constexpr char targetfile[] = "targetvoraver.txt";

// Lines of the target file, counted from 0.
constexpr std::size_t basereleaseline = 0;
constexpr std::size_t expansionreleaseline = 4;
constexpr std::size_t debugline = 6;

std::string mismatchmessage(const Form1& form, const std::string& target) {
  return "found vora version :" + form.foundversion + ":\r\n" + " need vora version :" + target +
         ":\r\n" + "in the default location of\r\n" + form.installfolder + "\r\n" +
         "local apps is\r\n" + form.homefolder + ":\r\n" + "and the vora user directory is\r\n" +
         form.pathlist[1];
}

}  // namespace

void readtarget(Form1& form) {
  form.targetlines = readlines(form.files, targetfile);
  form.debugmode = form.system.lowercase(form.targetlines[debugline]) == "debug";
  if (form.debugmode)
    form.setcaption(form.caption() + " DeBuGgInG M O D E!");
}

void checkrelease(Form1& form) {
  if (form.bothfound)
    return;
  if (firstfile(form.files, targetfile).empty() || form.debugmode)
    form.missingdata = true;
  if (form.missingdata)
    return;
  form.targetlines = readlines(form.files, targetfile);
  const std::string target(
      form.targetlines[form.expansiononly ? expansionreleaseline : basereleaseline]);
  if (form.foundversion != target)
    endwithmessage(form, mismatchmessage(form, target));
}
