// The command line, which knows the silent run alone.
#include "app/commandline.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr const char* silentwords[] = {"-s", "/s", "/silent", "-silent"};

// The text cut at every single space; nothing for the empty text.
std::vector<std::string> pieces(const std::string& text) {
  std::vector<std::string> result;
  if (text.empty())
    return result;
  std::size_t start = 0;
  for (auto space = text.find(' '); space != std::string::npos; space = text.find(' ', start)) {
    result.push_back(text.substr(start, space - start));
    start = space + 1;
  }
  result.push_back(text.substr(start));
  return result;
}

bool asksforsilence(System& system, const std::string& piece) {
  return std::find(std::begin(silentwords), std::end(silentwords), system.lowercase(piece)) !=
         std::end(silentwords);
}

void switchsilent(Form1& form) {
  for (Control* command :
       {&form.Command1, &form.Command2, &form.Command3, &form.Command4, &form.Command5})
    command->setenabled(false);
  form.Label19.setvisible(true);
  form.silentmode = true;
}

}  // namespace

bool willbesilent(System& system) {
  const std::vector<std::string> all = pieces(system.argumenttext());
  return !all.empty() && std::all_of(all.begin(), all.end(), [&](const std::string& piece) {
    return asksforsilence(system, piece);
  });
}

void examinearguments(Form1& form) {
  for (const std::string& piece : pieces(form.system.argumenttext())) {
    if (!asksforsilence(form.system, piece))
      endwithmessage(form, "Invalid argument: " + piece);
    switchsilent(form);
  }
}
