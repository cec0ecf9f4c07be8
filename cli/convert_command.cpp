#include "cli/convert_command.h"

#include <cstdio>
#include <optional>

#include "base/safe_save.h"
#include "cli/audio_io.h"
#include "cli/command_args.h"
#include "app/command_line.h"
#include "cli/terminal_progress.h"

int RunConvertCommand(const std::vector<std::string>& args) {
  CommandOptions parsed;
  if (!ParseOptions(args, "convert", "--to= --quality= --dither --raw-in= --raw= --rate= --channels=", &parsed))
    return kCommandFailed;
  std::optional<LRawSettings> rawIn;
  std::optional<LRawSettings> rawOut;
  const std::string to = parsed.Value("--to"), quality = parsed.Value("--quality");
  const bool dither = parsed.Has("--dither");
  double rate = 0, channels = 0;
  const std::vector<std::string>& files = parsed.words;
  for (const auto& [name, value] : parsed.options) {
    if (name == "--raw-in" || name == "--raw") {
      LRawSettings settings;
      if (!ParseRawSettings(value, &settings)) {
        PrintError(name + " erwartet RATE,KANÄLE,CODE, zum Beispiel 8000,1,1.");
        return kCommandFailed;
      }
      (name == "--raw" ? rawOut : rawIn) = settings;
    } else if (name == "--rate" && (!ParseNumber(value, &rate) || rate < 1000 || rate > 768000)) {
      PrintError("--rate erwartet eine Abtastrate von 1000 bis 768000 Hz.");
      return kCommandFailed;
    } else if (name == "--channels" && (!ParseNumber(value, &channels) || channels < 1 || channels > 16)) {
      PrintError("--channels erwartet 1 bis 16 Kanäle.");
      return kCommandFailed;
    }
  }
  if (files.size() != 2) {
    PrintError("convert erwartet eine Eingabe- und eine Ausgabedatei.");
    return kCommandFailed;
  }
  std::string message;
  LSoundFileFormat format;
  if (rawOut) {
    if (!quality.empty()) {
      PrintError("--quality gilt nur für mp3, ogg und opus, nicht für raw.");
      return kCommandFailed;
    }
    if (!to.empty() && to != "raw") {
      PrintError("--raw passt nicht zu --to " + to + ".");
      return kCommandFailed;
    }
    format.kind = LSoundFileKind::kRaw;
    format.raw = *rawOut;
    // The settings' rate and channels ask for a conversion like --rate and --channels.
    if (rate == 0) rate = rawOut->sampleRate;
    if (channels == 0) channels = rawOut->channels;
  } else if (to == "raw") {
    PrintError("--to raw braucht --raw RATE,KANÄLE,CODE.");
    return kCommandFailed;
  }

  LSoundFileInfo info;
  LSoundSource source = OpenInput(files[0], rawIn, &info, &message);
  if (source.IsError()) {
    PrintError(message);
    return kCommandFailed;
  }
  if (!rawOut && !FormatForTarget(files[1], to, &info, quality, &format, &message)) {
    PrintError(message);
    return kCommandFailed;
  }
  format.dither = dither;
  format.sampleRate = static_cast<std::uint32_t>(rate);
  format.channels = static_cast<int>(channels);
  format.tags = info.tags;
  if (const char* missing = LSoundFile::MissingCodec(format)) {
    PrintError(std::string("Der Codec \"") + missing + "\" ist in dieser Ausgabe von Sonvale nicht verfügbar.");
    return kCommandFailed;
  }

  LSafeSave save(files[1].c_str());
  if (!save.IsReady()) {
    PrintError("Die Datei \"" + files[1] + "\" kann nicht geschrieben werden. Überprüfen Sie, ob der Ordner existiert und Sie Schreibzugriff haben.");
    return kCommandFailed;
  }
  TerminalProgress progress;
  LSoundFileSaveNotes notes;
  LSafeSaveProcess reporting(progress, save);
  LProcessResult result =
      LSoundFile::Save(reporting, source, save.TempPath().c_str(), format, "Konvertieren", &notes);
  progress.Finish();
  if (result == kLProcessCancelled) {
    PrintError("Abgebrochen. Die Datei \"" + files[1] + "\" bleibt unverändert.");
    return kCommandCancelled;
  }
  if (result != kLProcessSuccess || !save.Commit()) {
    PrintError(progress.Error().empty() ? "Die Datei \"" + files[1] + "\" konnte nicht vollständig geschrieben werden. Sie bleibt unverändert."
                                        : progress.Error() + " Die Datei \"" + files[1] + "\" bleibt unverändert.");
    return kCommandFailed;
  }
  std::fputs(LSoundFileSaveWarnings(notes, format, files[1].c_str()).c_str(), stderr);
  return kCommandOK;
}
