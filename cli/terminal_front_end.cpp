#include "cli/terminal_front_end.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

int TerminalFrontEnd::Ask(const char* title, const char* text, const LArray<LStringLong>& buttons) {
  if (buttons.empty()) return -1;
  std::fprintf(stderr, "%s: %s\n", title ? title : "", text ? text : "");
  const int safe = static_cast<int>(buttons.size()) - 1;
  if (!interactive_) {
    std::fprintf(stderr, "Antwort: %s\n", buttons[safe].c_str());
    return safe;
  }
  for (std::size_t i = 0; i < buttons.size(); ++i) std::fprintf(stderr, "  %zu) %s\n", i + 1, buttons[i].c_str());
  std::fprintf(stderr, "Auswahl: ");
  std::string answer;
  if (!std::getline(std::cin, answer)) return safe;
  int choice = std::atoi(answer.c_str());
  return (choice >= 1 && choice <= static_cast<int>(buttons.size())) ? choice - 1 : safe;
}

void TerminalFrontEnd::Alert(const char* title, const char* text) {
  std::fprintf(stderr, "%s: %s\n", title && *title ? title : "Hinweis", text ? text : "");
}

void TerminalFrontEnd::WindowMessage(SVFileGUI*, const char* text) {
  std::fprintf(stderr, "Warnung: %s\n", text ? text : "");
}

LProcessResult TerminalFrontEnd::RunProcess(const char* title, const SVProcessJob& job) {
  TerminalProgress progress(quietProgress_);
  if (title) progress.SetStatus(title, 0);
  LProcessResult result = job(progress);
  progress.Finish();
  if (result == kLProcessFailed && !progress.Error().empty()) LastErrorSet(progress.Error());
  return result;
}
