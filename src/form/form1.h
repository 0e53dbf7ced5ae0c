// The window as plain data: its controls, and the values that its procedures share.
#pragma once

#include "engine/line_array.h"
#include "form/control.h"
#include "form/screen.h"
#include "platform/files.h"
#include "platform/system.h"

#include <array>
#include <string>
#include <vector>

// The title of the program's message boxes.
inline constexpr char program_title[] = "Vora Map Updater";

class Form1 {
public:
  Form1(Files& files_in, System& system_in, Screen& screen_in)
      : files(files_in), system(system_in), screen(screen_in) {}
  Form1(const Form1&) = delete;
  Form1& operator=(const Form1&) = delete;

  Files& files;
  System& system;
  Screen& screen;

private:
  Window window{files, screen, {}};
  std::string own_caption;

public:
  DriveList Drive1{window, "Drive1"};
  FileList File1{window, "File1"};
  DirectoryList Dir1{window, "Dir1"};
  Control Command1{window, "Command1"};
  Control Command2{window, "Command2"};
  Control Command3{window, "Command3"};
  Control Command4{window, "Command4"};
  Control Command5{window, "Command5"};
  Control Command6{window, "Command6"};
  Control Command7{window, "Command7"};
  Control Text1{window, "Text1"};
  Control Text2{window, "Text2"};
  Control Label1{window, "Label1"};
  Control Label2{window, "Label2"};
  Control Label3{window, "Label3"};
  Control Label4{window, "Label4"};
  Control Label5{window, "Label5"};
  Control Label6{window, "Label6"};
  Control Label7{window, "Label7"};
  Control Label8{window, "Label8"};
  Control Label9{window, "Label9"};
  Control Label10{window, "Label10"};
  Control Label11{window, "Label11"};
  Control Label12{window, "Label12"};
  Control Label13{window, "Label13"};
  Control Label14{window, "Label14"};
  Control Label15{window, "Label15"};
  Control Label16{window, "Label16"};
  Control Label17{window, "Label17"};
  Control Label18{window, "Label18"};
  Control Label19{window, "Label19"};

  // All controls.
  const std::vector<Control*>& controls() const { return window.controls; }

  const std::string& caption() const { return own_caption; }
  void set_caption(std::string new_caption);

  // The machine.
  std::string sysdrive;    // the system drive's letter and colon
  std::string homefolder;  // the user's data folder

  // The target release and the modes.
  LineArray targetlines;  // the target file
  bool debugmode = false;
  bool missingdata = false;  // a data file is missing, or debug mode is on: no release check
  bool silentmode = false;
  bool unattended = false;  // a silent run, known from the start: nobody would answer a message box
  bool info_failed = false;  // the diagnostic file could not be written

  // The installed editions. Folders end in "\", which stands alone when there is none.
  std::string basepath, bundlepath, expansionpath;
  bool expansionregistered = false;
  bool basefound = false;
  bool expansionfound = false;
  bool expansiononly = false;
  bool bothfound = false;

  // The selected edition.
  std::string edition;  // its letter, empty while none is selected
  std::string gamepath;
  std::string versionfolder, installfolder;  // where its executable is, and what a message names
  std::string foundversion;                  // its executable's release

  // The search and the conversion.
  std::array<std::string, 2> pathlist;  // search roots: 0 user space, 1 program space
  std::string rootpath;                 // the root being searched, or that of the chosen drive
  std::string dirpath;                  // the folder that the directory list was last moved to
  std::string filepattern;
  std::vector<Failure> unsearched;         // folders that could not be listed
  std::vector<std::string> foundlist{""};  // full paths of the maps found, then an empty one
  LineArray originalmaps;                  // names of the game's own maps
  std::string list_problem;                // why that list is empty, if maps may be replaced
  bool searching = false;                  // only the exit button does anything meanwhile
  bool converting = false;                 // nothing does anything meanwhile

  bool trouble = false;  // something went wrong: the exit status is 1
};

// The edition letters of the base edition and the expansion.
inline constexpr char base_letter[] = "v";
inline constexpr char expansion_letter[] = "t";

// Ends the program at once. The exit status says whether all went well.
[[noreturn]] void end_program(Form1& form);

// Shows a message box, then ends the program with exit status 1.
[[noreturn]] void end_with_message(Form1& form, const std::string& text);

// What the program says when it runs out of memory, at any time.
inline constexpr char out_of_memory_message[] =
    "The memory is not enough. Every map is as it was or converted.";

// Reports `out_of_memory_message`, then ends the program.
[[noreturn]] void end_out_of_memory(Form1& form);

// Reports on stderr that the user has interrupted a run which had converted so many maps, then ends
// the program.
[[noreturn]] void end_interrupted(Form1& form, long converted);

// Reports trouble in a message box, even in a silent run: there its text is on stderr before the
// box is shown.
void show_trouble(Form1& form, const std::string& text);

// `text` from outside as it may stand in what `show_trouble` shows: escaped where lines are
// printed.
std::string in_box(const Form1& form, const std::string& text);

// What to do where a data file is missing in the current folder, in one sentence.
std::string advise_folder(System& system, const std::string& file);

// Reports trouble: in a silent run on stderr, else in a message box. What `text` has from outside,
// such as a file's name, has gone through `printable`; of a failure it need not.
void report_trouble(Form1& form, const std::string& text);
void report_trouble(Form1& form, const Failure& failure);

// The same for several failures, one a line below a heading: their number and `many`, or `one` for
// a single one. What is there twice, as where both search roots are one folder, counts once. Does
// nothing when there are none.
void report_troubles(Form1& form, const std::string& one, const std::string& many,
                     const std::vector<Failure>& failures);

// Adds one to the stage counter, `Label8`.
void next_stage(Form1& form);
