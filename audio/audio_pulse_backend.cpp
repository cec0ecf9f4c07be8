#include "audio/audio_pulse_backend.h"

#ifndef SONVALE_HAVE_PULSE

std::unique_ptr<LAudioBackend> LAudioPulseBackendCreate() { return nullptr; }

#else

#include "audio/pulse_api.h"

#include <algorithm>

namespace {

class PulseBackend;

class PulseStream final : public LAudioStream {
public:
  PulseStream(PulseBackend* backend, LAudioDirection direction, const LAudioStreamSpec& shape, LAudioCallback* callback,
              std::string device, bool followDefault);
  ~PulseStream() override { Stop(); }
  LAudioStatus Start() override;
  void Stop() override;

private:
  static void StateChanged(pa_stream* s, void* self);
  static void Writable(pa_stream* s, size_t bytes, void* self);
  static void Readable(pa_stream* s, size_t bytes, void* self);
  static void Underflow(pa_stream* s, void* self);
  void LatencyUpdate();

  PulseBackend* backend_;
  LAudioDirection direction_;
  LAudioCallback* callback_;
  bool followDefault_;
  std::size_t frameBytes_;
  pa_stream* stream_ = nullptr;
  bool running_ = false;
};

class PulseBackend final : public LAudioBackend {
public:
  PulseBackend() = default;
  ~PulseBackend() override { Disconnect(); }

  const char* Name() const override { return "pulse"; }
  LAudioStatus Enumerate(std::vector<LAudioDeviceInfo>* devices) override;
  LAudioStatus Open(LAudioDirection direction, const LAudioStreamSpec& shape, LAudioCallback* callback,
                    std::unique_ptr<LAudioStream>* stream) override;
  bool Watch(std::function<void(const LAudioDeviceEvent&)> watcher) override;

  pa_threaded_mainloop* Loop() const { return loop_; }
  pa_context* Context() const { return context_; }
  // Waits (holding the loop's lock) until the operation is done.
  void Await(pa_operation* op) {
    if (!op) return;
    while (Pa().pa_operation_get_state(op) == PA_OPERATION_RUNNING) Pa().pa_threaded_mainloop_wait(loop_);
    Pa().pa_operation_unref(op);
  }

private:
  LAudioStatus Connect();
  void Disconnect();
  static void ContextChanged(pa_context* c, void* self);
  static void Subscribed(pa_context* c, pa_subscription_event_type_t t, uint32_t index, void* self);

  pa_threaded_mainloop* loop_ = nullptr;
  pa_context* context_ = nullptr;
  std::function<void(const LAudioDeviceEvent&)> watcher_;
};

struct EnumerateState {
  PulseBackend* backend;
  std::vector<LAudioDeviceInfo>* devices;
  std::string defaultSink, defaultSource;
};

LAudioStatus PulseBackend::Connect() {
  if (context_ && Pa().pa_context_get_state(context_) == PA_CONTEXT_READY) return LAudioStatus::kOK;
  Disconnect();
  loop_ = Pa().pa_threaded_mainloop_new();
  if (!loop_) return LAudioStatus::kFailed;
  context_ = Pa().pa_context_new(Pa().pa_threaded_mainloop_get_api(loop_), "Sonvale");
  if (!context_) return LAudioStatus::kFailed;
  Pa().pa_context_set_state_callback(context_, ContextChanged, this);
  Pa().pa_threaded_mainloop_lock(loop_);
  if (Pa().pa_threaded_mainloop_start(loop_) < 0) {
    Pa().pa_threaded_mainloop_unlock(loop_);
    return LAudioStatus::kFailed;
  }
  // Never start a server of our own: a missing one is reported.
  bool ok = Pa().pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) >= 0;
  while (ok) {
    const pa_context_state_t state = Pa().pa_context_get_state(context_);
    if (state == PA_CONTEXT_READY) break;
    if (!PA_CONTEXT_IS_GOOD(state)) ok = false;
    else Pa().pa_threaded_mainloop_wait(loop_);
  }
  Pa().pa_threaded_mainloop_unlock(loop_);
  if (!ok) {
    Disconnect();
    return LAudioStatus::kNoServer;
  }
  return LAudioStatus::kOK;
}

void PulseBackend::Disconnect() {
  if (loop_) Pa().pa_threaded_mainloop_stop(loop_);
  if (context_) {
    Pa().pa_context_disconnect(context_);
    Pa().pa_context_unref(context_);
    context_ = nullptr;
  }
  if (loop_) {
    Pa().pa_threaded_mainloop_free(loop_);
    loop_ = nullptr;
  }
}

void PulseBackend::ContextChanged(pa_context*, void* self) {
  Pa().pa_threaded_mainloop_signal(static_cast<PulseBackend*>(self)->loop_, 0);
}

void PulseBackend::Subscribed(pa_context*, pa_subscription_event_type_t t, uint32_t, void* self) {
  auto* backend = static_cast<PulseBackend*>(self);
  const unsigned facility = t & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
  const unsigned type = t & PA_SUBSCRIPTION_EVENT_TYPE_MASK;
  if (facility != PA_SUBSCRIPTION_EVENT_SINK && facility != PA_SUBSCRIPTION_EVENT_SOURCE) return;
  LAudioDeviceEvent event;
  event.direction = facility == PA_SUBSCRIPTION_EVENT_SINK ? LAudioDirection::kOutput : LAudioDirection::kInput;
  event.kind = type == PA_SUBSCRIPTION_EVENT_NEW      ? LAudioDeviceEvent::kAdded
               : type == PA_SUBSCRIPTION_EVENT_REMOVE ? LAudioDeviceEvent::kRemoved
                                                      : LAudioDeviceEvent::kChanged;
  if (backend->watcher_) backend->watcher_(event);
}

LAudioStatus PulseBackend::Enumerate(std::vector<LAudioDeviceInfo>* devices) {
  devices->clear();
  if (LAudioStatus status = Connect(); status != LAudioStatus::kOK) return status;
  EnumerateState state{this, devices, {}, {}};
  Pa().pa_threaded_mainloop_lock(loop_);
  Await(Pa().pa_context_get_server_info(
      context_,
      [](pa_context*, const pa_server_info* info, void* self) {
        auto* st = static_cast<EnumerateState*>(self);
        if (info && info->default_sink_name) st->defaultSink = info->default_sink_name;
        if (info && info->default_source_name) st->defaultSource = info->default_source_name;
        Pa().pa_threaded_mainloop_signal(st->backend->Loop(), 0);
      },
      &state));
  Await(Pa().pa_context_get_sink_info_list(
      context_,
      [](pa_context*, const pa_sink_info* info, int eol, void* self) {
        auto* st = static_cast<EnumerateState*>(self);
        if (eol == 0 && info) {
          st->devices->push_back({info->name ? info->name : "", info->description ? info->description : "",
                                  LAudioDirection::kOutput, info->sample_spec.rate, info->sample_spec.channels,
                                  info->name && st->defaultSink == info->name});
        }
        Pa().pa_threaded_mainloop_signal(st->backend->Loop(), 0);
      },
      &state));
  Await(Pa().pa_context_get_source_info_list(
      context_,
      [](pa_context*, const pa_source_info* info, int eol, void* self) {
        auto* st = static_cast<EnumerateState*>(self);
        if (eol == 0 && info) {
          st->devices->push_back({info->name ? info->name : "", info->description ? info->description : "",
                                  LAudioDirection::kInput, info->sample_spec.rate, info->sample_spec.channels,
                                  info->name && st->defaultSource == info->name});
        }
        Pa().pa_threaded_mainloop_signal(st->backend->Loop(), 0);
      },
      &state));
  const bool alive = Pa().pa_context_get_state(context_) == PA_CONTEXT_READY;
  Pa().pa_threaded_mainloop_unlock(loop_);
  return alive ? LAudioStatus::kOK : LAudioStatus::kNoServer;
}

bool PulseBackend::Watch(std::function<void(const LAudioDeviceEvent&)> watcher) {
  if (Connect() != LAudioStatus::kOK) return false;
  Pa().pa_threaded_mainloop_lock(loop_);
  watcher_ = std::move(watcher);
  Pa().pa_context_set_subscribe_callback(context_, Subscribed, this);
  const auto mask = watcher_ ? static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SOURCE)
                             : PA_SUBSCRIPTION_MASK_NULL;
  pa_operation* op = Pa().pa_context_subscribe(
      context_, mask,
      [](pa_context*, int, void* self) {
        Pa().pa_threaded_mainloop_signal(static_cast<PulseBackend*>(self)->Loop(), 0);
      },
      this);
  const bool ok = op != nullptr;
  Await(op);
  Pa().pa_threaded_mainloop_unlock(loop_);
  return ok;
}

LAudioStatus PulseBackend::Open(LAudioDirection direction, const LAudioStreamSpec& shape, LAudioCallback* callback,
                                std::unique_ptr<LAudioStream>* stream) {
  std::vector<LAudioDeviceInfo> devices;
  if (LAudioStatus status = Enumerate(&devices); status != LAudioStatus::kOK) return status;
  const LAudioDeviceInfo* device = LAudioDeviceFind(devices, direction, shape.device);
  if (!device && !shape.device.empty()) return LAudioStatus::kNoDevice;
  if (shape.sampleRate < 1000 || shape.sampleRate > PA_RATE_MAX || shape.channels < 1 || shape.channels > static_cast<int>(PA_CHANNELS_MAX) ||
      shape.bufferFrames == 0)
    return LAudioStatus::kFormatRefused;
  *stream = std::make_unique<PulseStream>(this, direction, shape, callback, device ? device->name : "",
                                          shape.device.empty());
  return LAudioStatus::kOK;
}

PulseStream::PulseStream(PulseBackend* backend, LAudioDirection direction, const LAudioStreamSpec& shape,
                         LAudioCallback* callback, std::string device, bool followDefault)
    : LAudioStream(shape),
      backend_(backend),
      direction_(direction),
      callback_(callback),
      followDefault_(followDefault),
      frameBytes_(sizeof(float) * static_cast<std::size_t>(shape.channels)) {
  deviceName_ = std::move(device);
}

LAudioStatus PulseStream::Start() {
  if (running_) return LAudioStatus::kOK;
  pa_sample_spec ss;
  ss.format = PA_SAMPLE_FLOAT32NE;
  ss.rate = spec_.sampleRate;
  ss.channels = static_cast<std::uint8_t>(spec_.channels);
  pa_threaded_mainloop* loop = backend_->Loop();
  Pa().pa_threaded_mainloop_lock(loop);
  stream_ = Pa().pa_stream_new(backend_->Context(),
                               direction_ == LAudioDirection::kOutput ? "Wiedergabe" : "Aufnahme", &ss, nullptr);
  if (!stream_) {
    Pa().pa_threaded_mainloop_unlock(loop);
    return LAudioStatus::kFormatRefused;
  }
  Pa().pa_stream_set_state_callback(stream_, StateChanged, this);
  const std::uint32_t bytes = static_cast<std::uint32_t>(spec_.bufferFrames * frameBytes_);
  pa_buffer_attr attr;
  attr.maxlength = static_cast<std::uint32_t>(-1);
  attr.tlength = bytes;
  attr.prebuf = static_cast<std::uint32_t>(-1);
  attr.minreq = static_cast<std::uint32_t>(std::max<std::size_t>(bytes / 4, frameBytes_));
  attr.fragsize = std::max<std::uint32_t>(bytes / 2, static_cast<std::uint32_t>(frameBytes_));
  int flags = PA_STREAM_ADJUST_LATENCY | PA_STREAM_INTERPOLATE_TIMING | PA_STREAM_AUTO_TIMING_UPDATE;
  // A named device that goes away ends the stream instead of moving it elsewhere unasked.
  if (!followDefault_) flags |= PA_STREAM_DONT_MOVE;
  const char* device = deviceName_.empty() ? nullptr : deviceName_.c_str();
  int result;
  if (direction_ == LAudioDirection::kOutput) {
    Pa().pa_stream_set_write_callback(stream_, Writable, this);
    Pa().pa_stream_set_underflow_callback(stream_, Underflow, this);
    result = Pa().pa_stream_connect_playback(stream_, device, &attr, static_cast<pa_stream_flags_t>(flags), nullptr,
                                             nullptr);
  } else {
    Pa().pa_stream_set_read_callback(stream_, Readable, this);
    Pa().pa_stream_set_overflow_callback(stream_, Underflow, this);
    result = Pa().pa_stream_connect_record(stream_, device, &attr, static_cast<pa_stream_flags_t>(flags));
  }
  pa_stream_state_t state = PA_STREAM_UNCONNECTED;
  while (result >= 0) {
    state = Pa().pa_stream_get_state(stream_);
    if (state == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state)) break;
    Pa().pa_threaded_mainloop_wait(loop);
  }
  running_ = result >= 0 && state == PA_STREAM_READY;
  if (running_ && deviceName_.empty()) {
    const char* actual = Pa().pa_stream_get_device_name(stream_);
    if (actual) deviceName_ = actual;
  }
  if (!running_) {
    Pa().pa_stream_set_state_callback(stream_, nullptr, nullptr);
    Pa().pa_stream_set_write_callback(stream_, nullptr, nullptr);
    Pa().pa_stream_set_read_callback(stream_, nullptr, nullptr);
    Pa().pa_stream_disconnect(stream_);
    Pa().pa_stream_unref(stream_);
    stream_ = nullptr;
  }
  Pa().pa_threaded_mainloop_unlock(loop);
  return running_ ? LAudioStatus::kOK : LAudioStatus::kFormatRefused;
}

void PulseStream::Stop() {
  if (!stream_) return;
  pa_threaded_mainloop* loop = backend_->Loop();
  Pa().pa_threaded_mainloop_lock(loop);
  Pa().pa_stream_set_state_callback(stream_, nullptr, nullptr);
  Pa().pa_stream_set_write_callback(stream_, nullptr, nullptr);
  Pa().pa_stream_set_read_callback(stream_, nullptr, nullptr);
  Pa().pa_stream_set_underflow_callback(stream_, nullptr, nullptr);
  Pa().pa_stream_set_overflow_callback(stream_, nullptr, nullptr);
  if (PA_STREAM_IS_GOOD(Pa().pa_stream_get_state(stream_))) Pa().pa_stream_disconnect(stream_);
  Pa().pa_stream_unref(stream_);
  stream_ = nullptr;
  running_ = false;
  Pa().pa_threaded_mainloop_unlock(loop);
}

void PulseStream::StateChanged(pa_stream* s, void* self) {
  auto* stream = static_cast<PulseStream*>(self);
  const pa_stream_state_t state = Pa().pa_stream_get_state(s);
  if (stream->running_ && (state == PA_STREAM_FAILED || state == PA_STREAM_TERMINATED))
    stream->StatusSet(LAudioStatus::kDeviceLost);
  Pa().pa_threaded_mainloop_signal(stream->backend_->Loop(), 0);
}

void PulseStream::LatencyUpdate() {
  pa_usec_t usec = 0;
  int negative = 0;
  if (Pa().pa_stream_get_latency(stream_, &usec, &negative) == 0)
    LatencySet(negative ? 0 : static_cast<long>(usec * spec_.sampleRate / 1000000));
}

void PulseStream::Writable(pa_stream* s, size_t bytes, void* self) {
  auto* stream = static_cast<PulseStream*>(self);
  while (bytes >= stream->frameBytes_) {
    void* data = nullptr;
    size_t n = bytes;
    // The server's own memory: nothing is allocated here.
    if (Pa().pa_stream_begin_write(s, &data, &n) < 0 || !data) return;
    n = std::min(n, bytes) / stream->frameBytes_ * stream->frameBytes_;
    if (n == 0) {
      Pa().pa_stream_cancel_write(s);
      return;
    }
    stream->callback_->Render(static_cast<float*>(data), static_cast<long>(n / stream->frameBytes_));
    Pa().pa_stream_write(s, data, n, nullptr, 0, PA_SEEK_RELATIVE);
    bytes -= n;
  }
  stream->LatencyUpdate();
}

void PulseStream::Readable(pa_stream* s, size_t, void* self) {
  auto* stream = static_cast<PulseStream*>(self);
  const void* data = nullptr;
  size_t n = 0;
  while (Pa().pa_stream_readable_size(s) > 0 && Pa().pa_stream_peek(s, &data, &n) == 0 && n > 0) {
    // A hole (no data) is dropped; data arrives in whole frames.
    if (data) stream->callback_->Capture(static_cast<const float*>(data), static_cast<long>(n / stream->frameBytes_));
    Pa().pa_stream_drop(s);
  }
  stream->LatencyUpdate();
}

void PulseStream::Underflow(pa_stream*, void* self) { static_cast<PulseStream*>(self)->UnderrunCount(); }

}  // namespace

std::unique_ptr<LAudioBackend> LAudioPulseBackendCreate() {
  if (!LPulseApi::Load()) return nullptr;
  return std::make_unique<PulseBackend>();
}

#endif
