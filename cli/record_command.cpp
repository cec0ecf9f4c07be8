#include "cli/record_command.h"

#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>

#include "audio/audio_recorder.h"
#include "base/safe_save.h"
#include "cli/audio_io.h"
#include "cli/command_args.h"
#include "app/command_line.h"
#include "cli/devices_command.h"
#include "cli/terminal_progress.h"

namespace {

constexpr int kBufferMilliseconds = 40;
constexpr auto kShowEvery = std::chrono::milliseconds(100);

}  // namespace

int RunRecordCommand(const std::vector<std::string>& args) {
  std::string device;
  double seconds = 0, rate = 0, channels = 0;
  std::vector<std::string> files;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const bool takesValue = a == "--seconds" || a == "--rate" || a == "--channels" || a == "--device";
    if (takesValue && i + 1 >= args.size()) {
      PrintError(a + " erwartet einen Wert.");
      return kCommandFailed;
    }
    if (a == "--seconds") {
      if (!ParseNumber(args[++i], &seconds) || !(seconds > 0) || seconds > 86400.0 * 7) {
        PrintError("--seconds erwartet eine Dauer in Sekunden über 0.");
        return kCommandFailed;
      }
    } else if (a == "--rate") {
      if (!ParseNumber(args[++i], &rate) || rate < 1000 || rate > 768000) {
        PrintError("--rate erwartet eine Abtastrate von 1000 bis 768000 Hz.");
        return kCommandFailed;
      }
    } else if (a == "--channels") {
      if (!ParseNumber(args[++i], &channels) || channels < 1 || channels > 16) {
        PrintError("--channels erwartet 1 bis 16 Kanäle.");
        return kCommandFailed;
      }
    } else if (a == "--device") {
      device = args[++i];
    } else if (a.size() > 1 && a[0] == '-') {
      PrintError("Unbekannte Option \"" + a + "\" für record.");
      return kCommandFailed;
    } else {
      files.push_back(a);
    }
  }
  if (files.size() != 1) {
    PrintError("record erwartet genau eine Ausgabedatei.");
    return kCommandFailed;
  }
  const std::string& out = files[0];
  std::string message;
  LSoundFileFormat format;
  if (!FormatForTarget(out, "", nullptr, "", &format, &message)) {
    PrintError(message);
    return kCommandFailed;
  }
  if (const char* missing = LSoundFile::MissingCodec(format)) {
    PrintError(std::string("Der Codec \"") + missing + "\" ist in dieser Ausgabe von Sonvale nicht verfügbar.");
    return kCommandFailed;
  }
  LSafeSave save(out.c_str());
  if (!save.IsReady()) {
    PrintError("Die Datei \"" + out + "\" kann nicht geschrieben werden. Überprüfen Sie, ob der Ordner existiert und Sie Schreibzugriff haben.");
    return kCommandFailed;
  }

  // Unless told otherwise, record in the device's own format.
  std::vector<LAudioDeviceInfo> devices;
  auto backend = AudioBackendWithDevices(&devices, device);
  if (!backend) return kCommandFailed;
  const LAudioDeviceInfo* info = LAudioDeviceFind(devices, LAudioDirection::kInput, device);
  LAudioStreamSpec shape;
  shape.device = device;
  shape.sampleRate = rate > 0 ? static_cast<std::uint32_t>(rate) : info && info->sampleRate ? info->sampleRate : 48000;
  shape.channels = channels > 0 ? static_cast<int>(channels) : info && info->channels ? std::min(info->channels, 16) : 2;
  shape.bufferFrames = std::max<std::uint32_t>(shape.sampleRate * kBufferMilliseconds / 1000, 64);
  const long long limit = seconds > 0 ? std::llround(seconds * shape.sampleRate) : 0;

  LCutListAudio recording;
  LAudioRecorder recorder(*backend);
  if (LAudioStatus status = recorder.Start(shape, &recording, limit); status != LAudioStatus::kOK) {
    PrintError(LAudioStatusMessage(status, device));
    return kCommandFailed;
  }
  const bool tty = ::isatty(STDERR_FILENO) != 0;
  while (recorder.IsRecording() && !TerminalProgress::Interrupted()) {
    if (tty) {
      std::fprintf(stderr, "\rAufnahme %s  %s   ", FramesClock(recorder.Frames(), shape.sampleRate).c_str(),
                   LevelText(recorder.Levels().Take()).c_str());
      std::fflush(stderr);
    }
    std::this_thread::sleep_for(kShowEvery);
  }
  recorder.Stop();
  if (tty) std::fputs("\n", stderr);
  // Ctrl-C ended the recording; it must not cancel saving it.
  TerminalProgress::ResetInterrupt();
  const std::string why = recorder.Message();
  if (!why.empty()) PrintError(why);
  if (recorder.DroppedFrames() > 0)
    std::fprintf(stderr, "Hinweis: %lld Frames gingen verloren, weil das Schreiben nicht nachkam.\n",
                 recorder.DroppedFrames());

  TerminalProgress progress(!tty);
  LSoundFileSaveNotes notes;
  const LProcessResult result =
      LSoundFile::Save(progress, recording.OpenSource(), save.TempPath().c_str(), format, "Aufnahme speichern", &notes);
  progress.Finish();
  if (result != kLProcessSuccess || !save.Commit()) {
    PrintError(progress.Error().empty() ? "Die Aufnahme konnte nicht als \"" + out + "\" gespeichert werden."
                                        : progress.Error() + " Die Aufnahme wurde nicht gespeichert.");
    return kCommandFailed;
  }
  std::fputs(LSoundFileSaveWarnings(notes, format, out.c_str()).c_str(), stderr);
  return why.empty() ? kCommandOK : kCommandFailed;
}
