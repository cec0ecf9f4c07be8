// Plays a known signal through a PulseAudio server of the test's own (a null
// sink, no sound card) and records the sink's monitor: what comes back must be
// the same tones at the same levels. Skipped, with the reason, where no server
// can be started. A second test follows devices coming and going on that server.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>

#include "audio/audio_player.h"
#include "run_command.h"
#include "support/temp_folder.h"
#include "wave_bytes.h"

namespace {

constexpr int kRate = 48000;
constexpr double kPi = 3.14159265358979323846;

// The amplitude of the tone at hz in x (a least-squares fit of sine and cosine).
double ToneAmplitude(const std::vector<double>& x, double hz) {
  double re = 0, im = 0;
  for (std::size_t n = 0; n < x.size(); ++n) {
    re += x[n] * std::cos(2 * kPi * hz * n / kRate);
    im += x[n] * std::sin(2 * kPi * hz * n / kRate);
  }
  return 2.0 * std::hypot(re, im) / static_cast<double>(x.size());
}

double Rms(const std::vector<double>& x) {
  double s = 0;
  for (double v : x) s += v * v;
  return std::sqrt(s / static_cast<double>(x.size()));
}

class PulseServer {
public:
  explicit PulseServer(const TempFolder& temp) : run_(temp.File("run")), log_(temp.File("pulse.log")) {
    ::mkdir(run_.c_str(), 0700);
    ::mkdir(temp.File("home").c_str(), 0700);
    // PULSE_SERVER too, so that a server named by the caller's environment is never used.
    env_ = {"XDG_RUNTIME_DIR=" + run_, "PULSE_RUNTIME_PATH=" + run_, "PULSE_SERVER=unix:" + run_ + "/native",
            "HOME=" + temp.File("home"),
            "SONVALE_AUDIO_BACKEND=pulse", "SONVALE_CACHE_DIR=" + temp.File("cache")};
    pid_ = ::fork();
    if (pid_ == 0) {
      for (const auto& e : env_) ::putenv(const_cast<char*>(e.c_str()));
      const std::string sink = "module-null-sink sink_name=svloop format=float32le rate=48000 channels=2";
      FILE* log = std::freopen(log_.c_str(), "w", stderr);
      (void)log;
      ::execlp("pulseaudio", "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--system=no",
               "--use-pid-file=no", "--log-target=stderr", "-L", sink.c_str(), "-L", "module-native-protocol-unix",
               static_cast<char*>(nullptr));
      ::_exit(127);
    }
  }
  ~PulseServer() {
    if (pid_ > 0) {
      ::kill(pid_, SIGTERM);
      ::waitpid(pid_, nullptr, 0);
    }
  }
  // Waits for the server's socket; empty when it answers, else why not.
  std::string Ready() {
    if (pid_ < 0) return "fork failed";
    for (int i = 0; i < 200; ++i) {
      struct stat st {};
      if (::stat((run_ + "/native").c_str(), &st) == 0) return "";
      if (::waitpid(pid_, nullptr, WNOHANG) == pid_) {
        pid_ = -1;
        return "pulseaudio ended at once: " + ReadFileBytes(log_);
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return "pulseaudio opened no socket within 10 s: " + ReadFileBytes(log_);
  }
  std::string Env() const {
    std::string line = "env";
    for (const auto& e : env_) line += " '" + e + "'";
    return line;
  }

private:
  std::string run_, log_;
  std::vector<std::string> env_;
  pid_t pid_ = -1;
};

}  // namespace

TEST(AudioLoop, WhatIsPlayedIntoANullSinkComesBackFromItsMonitor) {
  if (!ToolAvailable("pulseaudio")) GTEST_SKIP() << "pulseaudio is not installed";
  TempFolder temp;
  PulseServer server(temp);
  if (std::string why = server.Ready(); !why.empty()) GTEST_SKIP() << why;

  // One second: 1000 Hz at -6 dB on the left, 700 Hz at -12 dB on the right.
  std::vector<std::int16_t> tone;
  for (int n = 0; n < kRate; ++n) {
    tone.push_back(static_cast<std::int16_t>(std::lround(16383.0 * std::sin(2 * kPi * 1000 * n / kRate))));
    tone.push_back(static_cast<std::int16_t>(std::lround(8191.0 * std::sin(2 * kPi * 700 * n / kRate))));
  }
  const std::string in = temp.File("tone.wav"), out = temp.File("loop.wav");
  WriteFileBytes(in, WaveBytes16(tone, 2, kRate));
  const std::string binary = std::string("'") + SONVALE_BINARY + "'";
  std::string output;
  const int status = RunTool(server.Env() + " sh -c \"" + binary + " record '" + out +
                                 "' --seconds 2 --device svloop.monitor & sleep 0.3; " + binary + " play '" + in +
                                 "' --device svloop || exit 10; wait \\$! || exit 20\"",
                             &output);
  ASSERT_EQ(status, 0) << output;

  const std::vector<std::int16_t> got = WaveSamples16(ReadFileBytes(out));
  ASSERT_EQ(got.size(), 2u * 2 * kRate) << output;
  // The tone starts where the level first rises; half a second well inside it is measured.
  std::size_t start = 0;
  while (start < got.size() / 2 && std::abs(got[start * 2]) < 3000) ++start;
  ASSERT_LT(start + kRate, got.size() / 2) << "the tone is not in the recording";
  std::vector<double> left, right;
  for (std::size_t f = start + kRate / 10; f < start + kRate / 10 + kRate / 2; ++f) {
    left.push_back(got[f * 2] / 32767.0);
    right.push_back(got[f * 2 + 1] / 32767.0);
  }
  const auto dB = [](double a, double b) { return 20 * std::log10(a / b); };
  EXPECT_NEAR(dB(ToneAmplitude(left, 1000), 0.5), 0.0, 1.0);
  EXPECT_NEAR(dB(ToneAmplitude(right, 700), 0.25), 0.0, 1.0);
  // Nothing but the tone: its fit holds the whole level, and the other channel's tone is absent.
  EXPECT_NEAR(ToneAmplitude(left, 1000) / std::sqrt(2.0), Rms(left), 0.01);
  EXPECT_NEAR(ToneAmplitude(right, 700) / std::sqrt(2.0), Rms(right), 0.01);
  EXPECT_LT(ToneAmplitude(left, 700), 0.005);
  EXPECT_LT(ToneAmplitude(right, 1000), 0.005);
}

TEST(AudioLoop, DevicesComingAndGoingAreSeenAndALostDeviceEndsPlayback) {
  if (!ToolAvailable("pulseaudio") || !ToolAvailable("pactl")) GTEST_SKIP() << "pulseaudio or pactl is not installed";
  TempFolder temp;
  PulseServer server(temp);
  if (std::string why = server.Ready(); !why.empty()) GTEST_SKIP() << why;
  ::setenv("PULSE_SERVER", ("unix:" + temp.File("run") + "/native").c_str(), 1);
  {
    auto backend = LAudioBackendCreate("pulse");
    ASSERT_NE(backend, nullptr);
    std::atomic<int> added{0}, removed{0};
    ASSERT_TRUE(backend->Watch([&](const LAudioDeviceEvent& e) {
      if (e.direction != LAudioDirection::kOutput) return;
      if (e.kind == LAudioDeviceEvent::kAdded) ++added;
      if (e.kind == LAudioDeviceEvent::kRemoved) ++removed;
    }));
    std::string module;
    ASSERT_EQ(RunTool(server.Env() + " pactl load-module module-null-sink sink_name=svextra", &module), 0) << module;
    std::vector<LAudioDeviceInfo> devices;
    ASSERT_EQ(backend->Enumerate(&devices), LAudioStatus::kOK);
    ASSERT_NE(LAudioDeviceFind(devices, LAudioDirection::kOutput, "svextra"), nullptr) << "a new device is listed at once";

    LAudioPlayer player(*backend);
    LAudioStreamSpec shape;
    shape.device = "svextra";
    ASSERT_EQ(player.Open(shape), LAudioStatus::kOK);
    auto input = player.Play(LMakeSource<LSoundSourceError>());
    ASSERT_EQ(RunTool(server.Env() + " pactl unload-module " + module.substr(0, module.find('\n'))), 0);
    for (int i = 0; i < 400 && (player.Status() == LAudioStatus::kOK || removed == 0); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(25));
    EXPECT_GE(added.load(), 1);
    EXPECT_GE(removed.load(), 1);
    EXPECT_EQ(player.Status(), LAudioStatus::kDeviceLost);
    EXPECT_NE(player.Message().find("\"svextra\" ist nicht mehr verfügbar"), std::string::npos) << player.Message();
    ASSERT_EQ(backend->Enumerate(&devices), LAudioStatus::kOK);
    EXPECT_EQ(LAudioDeviceFind(devices, LAudioDirection::kOutput, "svextra"), nullptr);
    (void)backend->Watch(nullptr);
  }
  ::unsetenv("PULSE_SERVER");
}
