// The front end without a window: messages go to standard error, nobody presses a button.
#pragma once

#include "form/screen.h"
#include "platform/files.h"
#include "platform/system.h"

class ConsoleScreen : public Screen {
public:
  void show() override {}
  void showcaption(const std::string&) override {}
  void refresh(const Control&) override {}
  void appended(const Control&, std::string_view) override {}
  void messagebox(const std::string& text) override { standarderror(text); }
  void standarderror(const std::string& text) override;
  void processmessages() override {}
  [[noreturn]] void end(int status) override;
};

// Runs the program on a machine to its end; gives the exit status.
int runconsole(Files& files, System& system);
