#include "cli/convert_command.h"

#include <optional>

#include "base/safe_save.h"
#include "cli/audio_io.h"
#include "cli/command_args.h"
#include "cli/terminal_progress.h"
#include "engine/source_to_sink.h"

int RunConvertCommand(const std::vector<std::string>& args) {
  std::optional<LRawSettings> rawIn;
  std::optional<LRawSettings> rawOut;
  OutputChoice choice;
  std::vector<std::string> files;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--to") {
      if (i + 1 >= args.size()) {
        PrintError("--to erwartet ein Format.");
        return kCommandFailed;
      }
      choice.layout = args[++i];
      if (!IsKnownLayout(choice.layout)) {
        PrintError("Unbekanntes Zielformat \"" + choice.layout +
                   "\". Möglich sind pcm8, pcm16, pcm24, pcm32, float, alaw, ulaw, ima, gsm und raw.");
        return kCommandFailed;
      }
    } else if (a == "--dither") {
      choice.dither = true;
    } else if (a == "--raw-in" || a == "--raw") {
      LRawSettings settings;
      if (i + 1 >= args.size() || !ParseRawSettings(args[++i], &settings)) {
        PrintError(a + " erwartet RATE,KANÄLE,CODE, zum Beispiel 8000,1,1.");
        return kCommandFailed;
      }
      (a == "--raw" ? rawOut : rawIn) = settings;
    } else if (a.size() > 1 && a[0] == '-') {
      PrintError("Unbekannte Option \"" + a + "\" für convert.");
      return kCommandFailed;
    } else {
      files.push_back(a);
    }
  }
  if (files.size() != 2) {
    PrintError("convert erwartet eine Eingabe- und eine Ausgabedatei.");
    return kCommandFailed;
  }
  if (rawOut) {
    if (!choice.layout.empty() && choice.layout != "raw") {
      PrintError("--raw passt nicht zu --to " + choice.layout + ".");
      return kCommandFailed;
    }
    choice.layout = "raw";
    choice.raw = *rawOut;
  } else if (choice.layout == "raw") {
    PrintError("--to raw braucht --raw RATE,KANÄLE,CODE.");
    return kCommandFailed;
  }

  InputDescription description;
  std::string message;
  LSoundSource source = OpenInput(files[0], rawIn, &description, &message);
  if (source.IsError()) {
    PrintError(message);
    return kCommandFailed;
  }
  if (choice.layout.empty()) choice.layout = DefaultLayoutFor(description);

  LSafeSave save(files[1].c_str());
  if (!save.IsReady()) {
    PrintError("Die Datei \"" + files[1] + "\" kann nicht geschrieben werden. Überprüfen Sie, ob der Ordner existiert und Sie Schreibzugriff haben.");
    return kCommandFailed;
  }
  LSoundSink sink = OpenOutput(save.TempPath(), choice, source.GetSampleRate(), source.GetChannels(), &message);
  if (sink.HasError()) {
    PrintError(message);
    return kCommandFailed;
  }
  TerminalProgress progress;
  LPRSourceToSink job("Konvertieren", source, sink, true);
  sink = LSoundSink();
  LProcessResult result = Process(progress, job);
  progress.Finish();
  if (result == kLProcessCancelled) {
    PrintError("Abgebrochen. Die Datei \"" + files[1] + "\" bleibt unverändert.");
    return kCommandCancelled;
  }
  if (result != kLProcessSuccess || !save.Commit()) {
    PrintError("Die Datei \"" + files[1] + "\" konnte nicht vollständig geschrieben werden (Speicherplatz oder Schreibrechte?). Sie bleibt unverändert.");
    return kCommandFailed;
  }
  return kCommandOK;
}
