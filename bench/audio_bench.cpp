// sonvale_audio_bench: what playback reaches on this machine. Not a test.
//  1. callback time per block as a share of the block's duration (target <= 5 %),
//     on the null device, the mixer playing a 10,000-segment cut list;
//  2. the smallest output buffer that plays without an underrun, with the
//     latency the device reports (aim: <= 20 ms on PulseAudio, <= 10 ms on ALSA);
//  3. underruns while the cut list plays for SONVALE_BENCH_PLAY_SECONDS (default
//     60) with a busy effect on the other core (target: 0).
// The device is the backend's default (SONVALE_AUDIO_BACKEND chooses).
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "audio/audio_null_backend.h"
#include "audio/audio_player.h"
#include "bench_support.h"
#include "effects/echo.h"

namespace {

constexpr long long kSegments = 10000;
constexpr long long kSegmentFrames = 265;  // 10,000 of them make a minute at 44.1 kHz

using Clock = std::chrono::steady_clock;

void CallbackShare(const LCutListAudio& list) {
  LAudioNullBackend backend(LAudioNullBackend::Options{false, 0, 0, {}});
  for (const std::uint32_t block : {64u, 256u, 1024u}) {
    LAudioMixer mixer(kBenchRate, kBenchChannels, false);
    LAudioStreamSpec shape;
    shape.sampleRate = kBenchRate;
    shape.bufferFrames = block;
    std::unique_ptr<LAudioStream> stream;
    if (backend.Open(LAudioDirection::kOutput, shape, &mixer, &stream) != LAudioStatus::kOK) return;
    (void)stream->Start();
    auto input = mixer.Add(list.OpenSource());
    input->Play(0);
    double worst = 0, total = 0;
    long blocks = 0;
    auto* null = static_cast<LAudioNullStream*>(stream.get());
    for (long long played = 0; played < 30LL * kBenchRate; played += block, ++blocks) {
      if (blocks % 16 == 0) mixer.FillAll();
      const auto t0 = Clock::now();
      null->Pump(block);
      const double s = std::chrono::duration<double>(Clock::now() - t0).count();
      worst = std::max(worst, s);
      total += s;
    }
    const double duration = static_cast<double>(block) / kBenchRate;
    std::printf("callback, block %4u: mean %.3f %% max %.3f %% of the block's duration (target <= 5 %%) %s\n", block,
                100 * total / blocks / duration, 100 * worst / duration,
                total / blocks / duration <= 0.05 ? "PASS" : "FAIL");
  }
}

// Plays the list for seconds with a buffer of bufferMs; answers the underruns, and the latency seen.
// Underruns of the reader (ring dry) and of the device (callback late) apart.
struct Underruns {
  long reader = 0, device = 0;
  long Total() const { return reader + device; }
};

Underruns PlayFor(LAudioBackend& backend, const LCutListAudio& list, double bufferMs, double seconds, long* latency,
                  std::atomic<bool>* busy) {
  LAudioPlayer player(backend);
  LAudioStreamSpec shape;
  shape.sampleRate = kBenchRate;
  shape.bufferFrames = static_cast<std::uint32_t>(bufferMs * kBenchRate / 1000);
  if (player.Open(shape) != LAudioStatus::kOK) return {-1, -1};
  auto input = player.Play(list.OpenSource(), 0, -1, true);
  std::thread load;
  if (busy) {
    busy->store(true);
    // An effect rendering on the other core, as while an effect is applied.
    load = std::thread([busy] {
      LSPEcho echo;
      LSoundSource noise = LMakeSource<BenchNoiseSource>(1LL << 40, kBenchChannels);
      LSoundSource source = echo.OpenSource(noise);
      std::vector<float> block(8192 * kBenchChannels);
      while (busy->load()) source.Read(block.data(), 8192);
    });
  }
  long maxLatency = 0;
  const auto end = Clock::now() + std::chrono::duration<double>(seconds);
  while (Clock::now() < end && player.Status() == LAudioStatus::kOK) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    maxLatency = std::max(maxLatency, player.Stream()->LatencyFrames());
  }
  if (busy) {
    busy->store(false);
    load.join();
  }
  *latency = maxLatency;
  return {input->Underruns(), player.Stream()->Underruns()};
}

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  BenchCacheFolder folder;
  if (!folder.IsReady()) return 2;
  const long long itemFrames = 10LL * kBenchRate;
  LCutListAudio list;
  {
    LSoundCacheItemHandle item = BenchItemAdd(itemFrames);
    list = BenchSegmentList(item, kSegments, kSegmentFrames, itemFrames);
  }
  std::printf("cut list: %lld segments, %.1f s\n", list.SegmentCount(), static_cast<double>(list.GetLength()) / kBenchRate);
  CallbackShare(list);

  auto backend = LAudioBackendCreate();
  if (!backend) return 2;
  std::printf("backend: %s\n", backend->Name());
  double best = 0;
  for (const double ms : {2.5, 5.0, 10.0, 20.0, 40.0}) {
    long latency = 0;
    const Underruns u = PlayFor(*backend, list, ms, 3.0, &latency, nullptr);
    std::printf("buffer %5.1f ms: underruns in 3 s: %ld reader, %ld device; latency reported %.1f ms\n", ms, u.reader,
                u.device, 1000.0 * latency / kBenchRate);
    if (u.Total() == 0 && best == 0) best = 1000.0 * latency / kBenchRate;
  }
  std::printf("lowest latency without underrun: %.1f ms\n", best);

  const char* set = std::getenv("SONVALE_BENCH_PLAY_SECONDS");
  const double seconds = set ? std::atof(set) : 60.0;
  std::atomic<bool> busy{false};
  long latency = 0;
  const Underruns u = PlayFor(*backend, list, 20.0, seconds, &latency, &busy);
  std::printf("underruns in %.0f s of the 10,000-segment list, 20 ms buffer, an echo on the other core: %ld reader, "
              "%ld device (target 0) %s\n",
              seconds, u.reader, u.device, u.Total() == 0 ? "PASS" : "FAIL");
  return 0;
}
