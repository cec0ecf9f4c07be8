#include "cli/edit_command.h"

#include <clocale>
#include <cstdio>
#include <cstring>
#include <langinfo.h>
#include <fstream>
#include <iostream>
#include <unistd.h>

#include "cli/editor_session.h"

#ifdef SONVALE_HAVE_LIBEDIT
#include <cerrno>
#include <poll.h>

#include <editline/readline.h>
#endif

namespace {

#ifdef SONVALE_HAVE_LIBEDIT
// The line the callback interface of the line editor handed over.
struct TypedLine {
  std::string text;
  bool done = false;
  bool end = false;
} gTyped;

void OnTypedLine(char* text) {
  gTyped.done = true;
  gTyped.end = text == nullptr;
  if (text) gTyped.text = text;
  free(text);
}

// Reads one line with editing and history; false at the end of input or when
// Ctrl-C dropped the line (TerminalProgress::Interrupted tells which). A blocking
// readline would sit through a Ctrl-C, so the editor is fed a key at a time
// while the wait for keys can be interrupted.
bool ReadTypedLine(const std::string& prompt, std::string* line) {
  gTyped = TypedLine();
  rl_callback_handler_install(prompt.c_str(), OnTypedLine);
  while (!gTyped.done && !TerminalProgress::Interrupted()) {
    pollfd wait[2] = {{STDIN_FILENO, POLLIN, 0}, {TerminalProgress::InterruptFd(), POLLIN, 0}};
    const int ready = poll(wait, 2, -1);
    if (ready < 0 && errno != EINTR) gTyped.done = gTyped.end = true;
    if (ready > 0 && wait[0].revents) rl_callback_read_char();
  }
  rl_callback_handler_remove();
  if (!gTyped.done || gTyped.end) return false;
  *line = gTyped.text;
  if (!line->empty()) add_history(line->c_str());
  return true;
}
#endif

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
  CommandOptions parsed;
  if (!ParseOptions(args, "edit", "-e= -f= -o= --to=", &parsed)) return kCommandFailed;
  const std::string out = parsed.Value("-o"), to = parsed.Value("--to");
  EditorSession session(false);
  session.RecordingsRecover();
  for (const std::string& f : parsed.words) {
    int status = session.OpenDocument(f);
    if (status != kCommandOK) return status;
  }
  // Commands and scripts run in the order given.
  for (const auto& [kind, text] : parsed.options) {
    if (kind != "-e" && kind != "-f") continue;
    int status = kCommandOK;
    if (kind == "-e") {
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
  session.RecordingsRecover();
  for (const std::string& f : args) {
    int status = session.OpenDocument(f);
    if (status != kCommandOK && !terminal) return status;
  }
  if (!terminal) {
    const int status = RunLines(session, std::cin, "der Eingabe");
    session.WarnUnsaved();
    return status;
  }

  // Line editing decodes what is typed by the character type of the locale; in
  // the C locale it would drop every umlaut, so take UTF-8 there.
  std::setlocale(LC_CTYPE, "");
  if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) std::setlocale(LC_CTYPE, "C.UTF-8");
#ifdef SONVALE_HAVE_LIBEDIT
  // Ctrl-C stays with our handler, which cancels a running command.
  rl_catch_signals = 0;
#endif
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
    // A Ctrl-C that cancelled the last command is spent.
    TerminalProgress::ResetInterrupt();
#ifdef SONVALE_HAVE_LIBEDIT
    const bool read = ReadTypedLine(prompt, &line);
#else
    std::fputs(prompt.c_str(), stdout);
    std::fflush(stdout);
    const bool read = static_cast<bool>(std::getline(std::cin, line));
    if (!read) std::cin.clear();
#endif
    if (!read && TerminalProgress::Interrupted()) {
      // Ctrl-C at the prompt drops the line typed so far, as shells do.
      std::printf("\n");
      continue;
    }
    if (!read) {
      // End of input is a quit, with the same question about unsaved changes.
      std::printf("\n");
      last = session.ExecuteLine("quit");
      continue;
    }
    TerminalProgress::ResetInterrupt();
    // A failed or cancelled command returns to the prompt; the session goes on.
    last = session.ExecuteLine(line);
  }
  std::printf("\n");
  return last == kCommandCancelled ? kCommandOK : last;
}
