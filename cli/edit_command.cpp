#include "cli/edit_command.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <unistd.h>

#include "cli/editor_session.h"

#ifdef SONVALE_HAVE_LIBEDIT
#include <editline/readline.h>
#endif

namespace {

// Runs the lines of a script; stops at the first failing command.
int RunLines(EditorSession& session, std::istream& in, const std::string& source) {
  std::string line;
  int number = 0;
  while (std::getline(in, line)) {
    ++number;
    int status = session.ExecuteLine(line);
    if (status != kCommandOK) {
      std::fprintf(stderr, "sonvale: abgebrochen in %s, Zeile %d.\n", source.c_str(), number);
      return status;
    }
    if (session.QuitRequested()) break;
  }
  return kCommandOK;
}

}  // namespace

int RunEditCommand(const std::vector<std::string>& args) {
  std::vector<std::string> files;
  std::vector<std::pair<char, std::string>> steps;  // 'e' command, 'f' script, in the given order
  std::string out, to;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if ((a == "-e" || a == "-f" || a == "-o" || a == "--to") && i + 1 >= args.size()) {
      PrintError(a + " erwartet einen Wert.");
      return kCommandFailed;
    }
    if (a == "-e" || a == "-f") {
      steps.emplace_back(a[1], args[++i]);
    } else if (a == "-o") {
      out = args[++i];
    } else if (a == "--to") {
      to = args[++i];
    } else if (a.size() > 1 && a[0] == '-') {
      PrintError("Unbekannte Option \"" + a + "\" für edit.");
      return kCommandFailed;
    } else {
      files.push_back(a);
    }
  }
  EditorSession session(false);
  for (const std::string& f : files) {
    int status = session.OpenDocument(f);
    if (status != kCommandOK) return status;
  }
  for (const auto& [kind, text] : steps) {
    int status = kCommandOK;
    if (kind == 'e') {
      status = session.ExecuteLine(text);
    } else {
      std::ifstream script(text);
      if (!script) {
        PrintError("Das Skript \"" + text + "\" kann nicht gelesen werden.");
        return kCommandFailed;
      }
      status = RunLines(session, script, text);
    }
    if (status != kCommandOK) return status;
    if (session.QuitRequested()) break;
  }
  const int status = out.empty() ? kCommandOK : session.SaveCurrent(out, to);
  session.WarnUnsaved();
  return status;
}

int RunShellCommand(const std::vector<std::string>& args) {
  const bool terminal = isatty(STDIN_FILENO) != 0;
  EditorSession session(terminal);
  for (const std::string& f : args) {
    int status = session.OpenDocument(f);
    if (status != kCommandOK && !terminal) return status;
  }
  if (!terminal) {
    const int status = RunLines(session, std::cin, "der Eingabe");
    session.WarnUnsaved();
    return status;
  }

  std::printf("Sonvale – \"hilfe\" zeigt die Befehle, \"quit\" beendet.\n");
  int last = kCommandOK;
  while (!session.QuitRequested()) {
    std::string prompt = "sonvale";
    if (SVFile* file = session.Current()) {
      prompt += " [";
      prompt += session.Manager().CurrentFileWindow()->Title();
      prompt += file->IsModified() ? "*]" : "]";
    }
    prompt += "> ";
    std::string line;
#ifdef SONVALE_HAVE_LIBEDIT
    char* text = readline(prompt.c_str());
    if (!text) break;
    line = text;
    free(text);
    if (!line.empty()) add_history(line.c_str());
#else
    std::fputs(prompt.c_str(), stdout);
    std::fflush(stdout);
    if (!std::getline(std::cin, line)) break;
#endif
    TerminalProgress::ResetInterrupt();
    // A failed or cancelled command returns to the prompt; the session goes on.
    last = session.ExecuteLine(line);
  }
  std::printf("\n");
  return last == kCommandCancelled ? kCommandOK : last;
}
