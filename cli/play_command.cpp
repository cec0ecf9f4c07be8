#include "cli/play_command.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>

#include "audio/audio_player.h"
#include "cli/audio_io.h"
#include "cli/command_args.h"
#include "cli/devices_command.h"
#include "cli/terminal_progress.h"
#include "engine/sound_time.h"

namespace {

// What the device is asked to hold ahead: short enough for a cursor to follow.
constexpr int kBufferMilliseconds = 40;
constexpr auto kShowEvery = std::chrono::milliseconds(100);

}  // namespace

bool ParseTimeOption(const std::string& option, const std::string& text, long long* ms, std::string* message) {
  if (!LSoundTime::IsValid(text.c_str())) {
    *message = option + " erwartet eine Zeit wie 1:23.5 oder 83.5, nicht \"" + text + "\".";
    return false;
  }
  LSoundTime time;
  time.SetText(text.c_str());
  *ms = time.Get();
  return true;
}

int RunPlayCommand(const std::vector<std::string>& args) {
  std::string device, message;
  std::optional<long long> fromMs, toMs;
  std::vector<std::string> files;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    const bool takesValue = a == "--from" || a == "--to" || a == "--device";
    if (takesValue && i + 1 >= args.size()) {
      PrintError(a + " erwartet einen Wert.");
      return kCommandFailed;
    }
    if (a == "--from" || a == "--to") {
      long long ms = 0;
      if (!ParseTimeOption(a, args[++i], &ms, &message)) {
        PrintError(message);
        return kCommandFailed;
      }
      (a == "--from" ? fromMs : toMs) = ms;
    } else if (a == "--device") {
      device = args[++i];
    } else if (a.size() > 1 && a[0] == '-') {
      PrintError("Unbekannte Option \"" + a + "\" für play.");
      return kCommandFailed;
    } else {
      files.push_back(a);
    }
  }
  if (files.size() != 1) {
    PrintError("play erwartet genau eine Datei.");
    return kCommandFailed;
  }
  LSoundFileInfo info;
  LSoundSource source = OpenInput(files[0], std::nullopt, &info, &message);
  if (source.IsError()) {
    PrintError(message);
    return kCommandFailed;
  }
  const std::uint32_t rate = source.GetSampleRate();
  const long long end = source.GetEndSample();
  const long long from = fromMs ? *fromMs * rate / 1000 : 0;
  const long long to = toMs ? *toMs * rate / 1000 : end;
  if (from >= end || to <= from) {
    PrintError("Der Bereich zum Abspielen ist leer: die Datei ist " + FramesClock(end, rate) + " lang.");
    return kCommandFailed;
  }

  auto backend = AudioBackendOpen(&message);
  if (!backend) {
    PrintError(message);
    return kCommandFailed;
  }
  LAudioStreamSpec shape;
  shape.device = device;
  shape.sampleRate = rate;
  shape.channels = source.GetChannels();
  shape.bufferFrames = std::max<std::uint32_t>(rate * kBufferMilliseconds / 1000, 64);
  LAudioPlayer player(*backend);
  if (LAudioStatus status = player.Open(shape); status != LAudioStatus::kOK) {
    PrintError(LAudioStatusMessage(status, device));
    return kCommandFailed;
  }
  auto input = player.Play(std::move(source), from, to);
  const bool tty = ::isatty(STDERR_FILENO) != 0;
  int result = kCommandOK;
  while (!input->IsFinished()) {
    if (TerminalProgress::Interrupted()) {
      input->Stop();
      result = kCommandCancelled;
      break;
    }
    if (player.Status() != LAudioStatus::kOK) {
      if (tty) std::fputs("\n", stderr);
      PrintError(player.Message());
      return kCommandFailed;
    }
    if (tty) {
      std::fprintf(stderr, "\r%s / %s  %s   ", FramesClock(input->Position(), rate).c_str(),
                   FramesClock(to, rate).c_str(), LevelText(input->Levels().Take()).c_str());
      std::fflush(stderr);
    }
    std::this_thread::sleep_for(kShowEvery);
  }
  if (tty) std::fputs("\n", stderr);
  if (input->Underruns() > 0)
    std::fprintf(stderr, "Hinweis: Die Wiedergabe stockte %ld Mal.\n", input->Underruns());
  player.Close();
  return result;
}
