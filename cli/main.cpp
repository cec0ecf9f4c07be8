// sonvale: the command-line front end of the editor.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "cli/batch_command.h"
#include "cli/cache_command.h"
#include "cli/command_args.h"
#include "cli/convert_command.h"
#include "cli/devices_command.h"
#include "cli/edit_command.h"
#include "cli/editor_session.h"
#include "cli/info_command.h"
#include "cli/play_command.h"
#include "cli/record_command.h"
#include "cli/terminal_progress.h"

namespace {

void PrintUsage(FILE* out) {
  std::fputs(
      "Aufruf: sonvale BEFEHL [OPTIONEN] DATEI...\n"
      "\n"
      "Befehle:\n"
      "  info [--json] [--loudness] [--raw-in R,K,C] DATEI...\n"
      "                                            Format, Abtastrate, Kanäle, Länge, Lautheit\n"
      "  convert EIN AUS [--to FORMAT] [--quality Q] [--dither] [--raw-in R,K,C] [--raw R,K,C]\n"
      "                                            in ein anderes Format schreiben\n"
      "  edit DATEI... [-e BEFEHLE]... [-f SKRIPT] [-o AUS] [--to FORMAT]\n"
      "                                            Befehle auf Dokumente anwenden\n"
      "  shell [DATEI...]                          Befehle interaktiv eingeben\n"
      "  batch [-j N] (--chain KETTE.ecf | -e BEFEHLE...) [--to FORMAT] --out ORDNER\n"
      "        [--shard K/N] DATEI...              viele Dateien gleich bearbeiten\n"
      "  cache [--clean]                           Zwischenspeicher zeigen und aufräumen\n"
      "  devices [--json]                          Audiogeräte zur Wiedergabe und Aufnahme\n"
      "  play DATEI [--from ZEIT] [--to ZEIT] [--device NAME]\n"
      "                                            abspielen; Strg-C hält an\n"
      "  record AUS [--seconds S] [--rate R] [--channels K] [--device NAME]\n"
      "                                            aufnehmen; Strg-C beendet und speichert\n"
      "\n"
      "Formate: wav rf64 aiff mp3 flac ogg opus raw, WAVE-Formate pcm8 pcm16 pcm24 pcm32 float alaw ulaw ima gsm\n"
      "Rohdaten-Codes: 0 VOX, 1 µ-law, 2 A-law, 3 16 Bit, 4 8 Bit ohne Vorzeichen,\n"
      "                5 8 Bit, 6 16 Bit Big-Endian, 7 Gleitkomma, 8 Gleitkomma Big-Endian\n",
      out);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    PrintUsage(stderr);
    return kCommandFailed;
  }
  std::string command = argv[1];
  std::vector<std::string> args(argv + 2, argv + argc);
  TerminalProgress::InstallInterruptHandler();
  if (command == "info") return RunInfoCommand(args);
  if (command == "convert") return RunConvertCommand(args);
  if (command == "edit") return RunEditCommand(args);
  if (command == "shell") return RunShellCommand(args);
  if (command == "batch") return RunBatchCommand(args);
  if (command == "cache") return RunCacheCommand(args);
  if (command == "devices") return RunDevicesCommand(args);
  if (command == "play") return RunPlayCommand(args);
  if (command == "record") return RunRecordCommand(args);
  if (command == "hilfe" || command == "help" || command == "--help" || command == "-h") {
    PrintUsage(stdout);
    std::fputs("\n", stdout);
    std::fputs(EditorSession::HelpText(), stdout);
    return kCommandOK;
  }
  PrintError("Unbekannter Befehl \"" + command + "\". \"sonvale hilfe\" zeigt die Befehle.");
  return kCommandFailed;
}
