#include "audio/audio_mixer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

#include "engine/channel_map_source.h"
#include "engine/resample_source.h"

namespace {

// How far each input is read ahead of the callback.
constexpr double kReadAheadSeconds = 0.5;
// The reader looks again at least this often even when nobody wakes it.
constexpr auto kReaderPoll = std::chrono::milliseconds(5);

int RingBlocks(std::uint32_t rate) {
  const double frames = kReadAheadSeconds * rate;
  return std::max(8, static_cast<int>(std::ceil(frames / static_cast<double>(LAudioMixer::kBlockFrames))));
}

}  // namespace

LAudioMixerInput::LAudioMixerInput(LAudioMixer* mixer, LSoundSource source)
    : mixer_(mixer),
      sourceRate_(source.GetSampleRate() == 0 ? mixer->SampleRate() : source.GetSampleRate()),
      deviceRate_(mixer->SampleRate()),
      end_(source.GetEndSample()),
      ring_(RingBlocks(mixer->SampleRate()), LAudioMixer::kBlockFrames, mixer->Channels()) {
  source_ = LSRCChannelMap::Convert(LSRCResample::Convert(std::move(source), mixer->SampleRate()), mixer->Channels());
}

LAudioMixerInput::~LAudioMixerInput() = default;

long long LAudioMixerInput::SourceToDevice(long long f) const {
  if (sourceRate_ == deviceRate_) return f;
  return std::llround(static_cast<double>(f) * deviceRate_ / sourceRate_);
}

long long LAudioMixerInput::DeviceToSource(long long f) const {
  if (sourceRate_ == deviceRate_) return f;
  return std::llround(static_cast<double>(f) * sourceRate_ / deviceRate_);
}

void LAudioMixerInput::RequestPost(const Request& request) {
  {
    std::lock_guard<std::mutex> lock(requestMutex_);
    request_ = request;
    startPosition_.store(SourceToDevice(request.at), std::memory_order_relaxed);
    generation_.store(generation_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }
  if (mixer_) mixer_->Wake();
}

void LAudioMixerInput::Play(long long from, long long to, bool loop) {
  Request r;
  r.from = std::clamp(from, 0LL, end_);
  r.to = to < 0 ? end_ : std::clamp(to, r.from, end_);
  r.at = r.from;
  r.loop = loop;
  paused_.store(false, std::memory_order_relaxed);
  RequestPost(r);
}

void LAudioMixerInput::Seek(long long frame) {
  Request r;
  {
    std::lock_guard<std::mutex> lock(requestMutex_);
    r = request_;
  }
  if (r.stop) return;
  r.at = std::clamp(frame, r.from, std::max(r.from, r.to - 1));
  RequestPost(r);
}

void LAudioMixerInput::Stop() {
  Request r;
  const long long at = Position();
  {
    std::lock_guard<std::mutex> lock(requestMutex_);
    r = request_;
  }
  r.stop = true;
  r.at = at;
  RequestPost(r);
}

bool LAudioMixerInput::SourceSet(LSoundSource source) {
  const std::uint32_t rate = source.GetSampleRate() == 0 ? deviceRate_ : source.GetSampleRate();
  if (rate != sourceRate_) return false;
  const long long at = Position();
  Request r;
  {
    std::lock_guard<std::mutex> lock(requestMutex_);
    r = request_;
  }
  end_ = source.GetEndSample();
  LSoundSource converted =
      LSRCChannelMap::Convert(LSRCResample::Convert(std::move(source), deviceRate_), mixer_ ? mixer_->Channels() : 1);
  {
    std::lock_guard<std::mutex> lock(requestMutex_);
    pending_ = std::move(converted);
  }
  r.at = std::clamp(at, r.from, std::max(r.from, r.to - 1));
  RequestPost(r);
  return true;
}

void LAudioMixerInput::Pause() { paused_.store(true, std::memory_order_relaxed); }
void LAudioMixerInput::Resume() { paused_.store(false, std::memory_order_relaxed); }

bool LAudioMixerInput::IsFinished() const {
  if (generation_.load(std::memory_order_acquire) == 0) return true;
  if (endedGeneration_.load(std::memory_order_acquire) != generation_.load(std::memory_order_acquire)) return false;
  const long long heard = mixer_ ? mixer_->DeviceFrames() - mixer_->Latency() : 0;
  return heard >= endedAt_.load(std::memory_order_relaxed);
}

long long LAudioMixerInput::Position() const {
  const long long heard = mixer_ ? mixer_->DeviceFrames() - mixer_->Latency() : 0;
  const std::uint32_t generation = generation_.load(std::memory_order_acquire);
  // A copy of the runs, taken again when the callback changed them meanwhile.
  long long device[kRuns], source[kRuns], length[kRuns];
  std::uint32_t runGeneration[kRuns];
  int count = 0, head = 0;
  for (;;) {
    const std::uint32_t before = sequence_.load(std::memory_order_acquire);
    if (before & 1u) continue;
    count = runCount_.load(std::memory_order_relaxed);
    head = runHead_.load(std::memory_order_relaxed);
    for (int i = 0; i < kRuns; ++i) {
      device[i] = runs_[i].device.load(std::memory_order_relaxed);
      source[i] = runs_[i].source.load(std::memory_order_relaxed);
      length[i] = runs_[i].length.load(std::memory_order_relaxed);
      runGeneration[i] = runs_[i].generation.load(std::memory_order_relaxed);
    }
    std::atomic_thread_fence(std::memory_order_acquire);
    if (sequence_.load(std::memory_order_relaxed) == before) break;
  }
  long long at = startPosition_.load(std::memory_order_relaxed);
  for (int k = 0; k < count; ++k) {
    const int i = (head - k + kRuns) % kRuns;
    if (device[i] > heard) continue;
    const long long into = heard - device[i];
    // Once the old request's sound is all heard, the new request's start is the place.
    if (runGeneration[i] != generation && into >= length[i]) break;
    at = source[i] + std::min(into, length[i]);
    break;
  }
  return std::clamp(DeviceToSource(at), 0LL, end_);
}

bool LAudioMixerInput::Fill() {
  const std::uint32_t wanted = generation_.load(std::memory_order_acquire);
  if (wanted != readerGeneration_) {
    std::lock_guard<std::mutex> lock(requestMutex_);
    serving_ = request_;
    readerGeneration_ = generation_.load(std::memory_order_relaxed);
    // The handle moves over whole: the reader alone holds the new chain from here.
    if (!pending_.IsEmpty()) {
      LSoundSource taken(std::move(pending_));
      source_ = std::move(taken);
    }
    readAt_ = SourceToDevice(serving_.at);
    if (!serving_.stop) source_.Seek(readAt_);
    readerDone_ = false;
  }
  if (readerDone_) return false;
  const long long fromDevice = SourceToDevice(serving_.from);
  const long long toDevice = SourceToDevice(serving_.to);
  bool wrote = false;
  while (LAudioBlockRing::Block* block = ring_.Free()) {
    // A newer request wins at once.
    if (generation_.load(std::memory_order_acquire) != readerGeneration_) break;
    block->generation = readerGeneration_;
    block->position = readAt_;
    block->frames = 0;
    block->last = false;
    long long n = serving_.stop ? 0 : std::min<long long>(ring_.FramesPerBlock(), toDevice - readAt_);
    if (n <= 0 && serving_.loop && !serving_.stop && toDevice > fromDevice) {
      readAt_ = fromDevice;
      source_.Seek(readAt_);
      continue;
    }
    if (n > 0) {
      source_.Read(block->samples, n);
      block->frames = static_cast<long>(n);
      readAt_ += n;
    }
    block->last = n <= 0 || (readAt_ >= toDevice && !serving_.loop);
    ring_.Push();
    wrote = true;
    if (block->last) {
      readerDone_ = true;
      break;
    }
  }
  return wrote;
}

void LAudioMixerInput::RunExtend(long long device, long long source, long frames) {
  sequence_.fetch_add(1, std::memory_order_acq_rel);
  const std::uint32_t generation = playingGeneration_;
  int head = runHead_.load(std::memory_order_relaxed);
  const int count = runCount_.load(std::memory_order_relaxed);
  bool extend = false;
  if (count > 0) {
    Run& r = runs_[head];
    const long long length = r.length.load(std::memory_order_relaxed);
    extend = r.generation.load(std::memory_order_relaxed) == generation &&
             r.device.load(std::memory_order_relaxed) + length == device &&
             r.source.load(std::memory_order_relaxed) + length == source;
    if (extend) r.length.store(length + frames, std::memory_order_relaxed);
  }
  if (!extend) {
    head = (head + 1) % kRuns;
    runs_[head].device.store(device, std::memory_order_relaxed);
    runs_[head].source.store(source, std::memory_order_relaxed);
    runs_[head].length.store(frames, std::memory_order_relaxed);
    runs_[head].generation.store(generation, std::memory_order_relaxed);
    runHead_.store(head, std::memory_order_relaxed);
    runCount_.store(std::min(count + 1, kRuns), std::memory_order_relaxed);
  }
  sequence_.fetch_add(1, std::memory_order_release);
}

void LAudioMixerInput::MixInto(float* out, long frames, int channels, long long d) {
  const std::uint32_t generation = generation_.load(std::memory_order_acquire);
  if (generation != playingGeneration_) {
    playingGeneration_ = generation;
    started_ = false;
  }
  if (paused_.load(std::memory_order_relaxed)) return;
  if (endedGeneration_.load(std::memory_order_relaxed) == generation) return;
  const float gain = mute_.load(std::memory_order_relaxed) ? 0.0f : gain_.load(std::memory_order_relaxed);
  const float pan = pan_.load(std::memory_order_relaxed);
  float factor[kLAudioMixerChannelFactors];
  for (int c = 0; c < kLAudioMixerChannelFactors; ++c) factor[c] = gain;
  if (channels >= 2) {
    factor[0] = gain * std::min(1.0f, 1.0f - pan);
    factor[1] = gain * std::min(1.0f, 1.0f + pan);
  }
  long done = 0;
  while (done < frames) {
    LAudioBlockRing::Block* block = ring_.Front();
    if (!block) {
      if (started_) underruns_.fetch_add(1, std::memory_order_relaxed);
      break;
    }
    if (block->generation != generation) {
      ring_.Pop();
      consumed_ = 0;
      continue;
    }
    started_ = true;
    const long n = std::min(frames - done, block->frames - consumed_);
    if (n > 0) {
      const float* in = block->samples + static_cast<long long>(consumed_) * channels;
      float* to = out + static_cast<long long>(done) * channels;
      for (long f = 0; f < n; ++f)
        for (int c = 0; c < channels; ++c)
          to[f * channels + c] += in[f * channels + c] * factor[std::min(c, kLAudioMixerChannelFactors - 1)];
      levels_.Measure(in, n, channels);
      RunExtend(d + done, block->position + consumed_, n);
      consumed_ += n;
      done += n;
    }
    if (consumed_ >= block->frames) {
      const bool last = block->last;
      ring_.Pop();
      consumed_ = 0;
      if (last) {
        endedAt_.store(d + done, std::memory_order_relaxed);
        endedGeneration_.store(generation, std::memory_order_release);
        break;
      }
    }
  }
}

LAudioMixer::LAudioMixer(std::uint32_t sampleRate, int channels, bool readerThread)
    : sampleRate_(sampleRate == 0 ? 48000 : sampleRate), channels_(std::clamp(channels, 1, 255)) {
  if (readerThread) reader_ = std::thread([this] { ReaderLoop(); });
}

LAudioMixer::~LAudioMixer() {
  {
    std::lock_guard<std::mutex> lock(inputsMutex_);
    quit_ = true;
  }
  wake_.notify_all();
  if (reader_.joinable()) reader_.join();
  for (auto& input : inputs_) input->mixer_ = nullptr;
}

std::shared_ptr<LAudioMixerInput> LAudioMixer::Add(LSoundSource source) {
  std::lock_guard<std::mutex> lock(inputsMutex_);
  for (auto& slot : slots_) {
    if (slot.load() != nullptr) continue;
    std::shared_ptr<LAudioMixerInput> input(new LAudioMixerInput(this, std::move(source)));
    inputs_.push_back(input);
    slot.store(input.get());
    return input;
  }
  return nullptr;
}

void LAudioMixer::Remove(const std::shared_ptr<LAudioMixerInput>& input) {
  if (!input) return;
  for (auto& slot : slots_) {
    if (slot.load() == input.get()) slot.store(nullptr);
  }
  // A callback that took the input before the store finishes with it first.
  while (rendering_.load()) std::this_thread::yield();
  std::lock_guard<std::mutex> lock(inputsMutex_);
  inputs_.erase(std::remove(inputs_.begin(), inputs_.end(), input), inputs_.end());
}

void LAudioMixer::Wake() {
  {
    std::lock_guard<std::mutex> lock(inputsMutex_);
    woken_ = true;
  }
  wake_.notify_all();
}

void LAudioMixer::FillAll() {
  std::vector<std::shared_ptr<LAudioMixerInput>> inputs;
  {
    std::lock_guard<std::mutex> lock(inputsMutex_);
    inputs = inputs_;
  }
  for (auto& input : inputs) {
    while (input->Fill()) {
    }
  }
}

void LAudioMixer::ReaderLoop() {
  std::vector<std::shared_ptr<LAudioMixerInput>> inputs;
  for (;;) {
    {
      std::unique_lock<std::mutex> lock(inputsMutex_);
      wake_.wait_for(lock, kReaderPoll, [this] { return woken_ || quit_; });
      if (quit_) return;
      woken_ = false;
      inputs = inputs_;
    }
    for (auto& input : inputs) (void)input->Fill();
    // The last reference may go here, on the reader, which owns the source anyway.
    inputs.clear();
  }
}

void LAudioMixer::Render(float* out, long frames) {
  rendering_.store(true);
  std::memset(out, 0, static_cast<std::size_t>(frames) * channels_ * sizeof(float));
  const long long d = deviceFrames_.load(std::memory_order_relaxed);
  for (auto& slot : slots_) {
    if (LAudioMixerInput* input = slot.load()) input->MixInto(out, frames, channels_, d);
  }
  levels_.Measure(out, frames, channels_);
  deviceFrames_.store(d + frames, std::memory_order_release);
  rendering_.store(false);
}
