#pragma once
// The command's front end for the document model: messages go to standard
// error, long jobs show the terminal progress display, and questions are asked
// on the terminal when there is one (a script gets the safe answer, the last button).
#include "app/front_end.h"
#include "cli/terminal_progress.h"

class TerminalFrontEnd final : public SVFrontEnd {
public:
  explicit TerminalFrontEnd(bool interactive, bool quietProgress = false)
      : interactive_(interactive), quietProgress_(quietProgress) {}

  void Notify(SVFileGUI*, int) override {}
  void Refresh(SVFileGUI*) override {}
  int Ask(const char* title, const char* text, const LArray<LStringLong>& buttons) override;
  void Alert(const char* title, const char* text) override;
  void WindowMessage(SVFileGUI* window, const char* text) override;
  void StartPlayback(SVFileGUI*) override {}
  LProcessResult RunProcess(const char* title, const SVProcessJob& job) override;

private:
  bool interactive_;
  bool quietProgress_;
};
