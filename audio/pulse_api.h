#pragma once
// LPulseApi: the libpulse functions the PulseAudio backend calls, bound at run
// time when the first backend is made, so that a start that plays nothing maps
// none of the sound server's libraries. Load binds once per process, from any
// thread; after it answered true, Pa() gives the table.
#ifdef SONVALE_HAVE_PULSE

#include <pulse/pulseaudio.h>

#define SONVALE_PULSE_FUNCTIONS(X)                                                                             \
  X(pa_context_connect) X(pa_context_disconnect) X(pa_context_get_server_info) X(pa_context_get_sink_info_list) \
  X(pa_context_get_source_info_list) X(pa_context_get_state) X(pa_context_new) X(pa_context_set_state_callback) \
  X(pa_context_set_subscribe_callback) X(pa_context_subscribe) X(pa_context_unref) X(pa_operation_get_state)    \
  X(pa_operation_unref) X(pa_stream_begin_write) X(pa_stream_cancel_write) X(pa_stream_connect_playback)        \
  X(pa_stream_connect_record) X(pa_stream_disconnect) X(pa_stream_drop) X(pa_stream_get_device_name)           \
  X(pa_stream_get_latency) X(pa_stream_get_state) X(pa_stream_new) X(pa_stream_peek) X(pa_stream_readable_size) \
  X(pa_stream_set_overflow_callback) X(pa_stream_set_read_callback) X(pa_stream_set_state_callback)             \
  X(pa_stream_set_underflow_callback) X(pa_stream_set_write_callback) X(pa_stream_unref) X(pa_stream_write)     \
  X(pa_threaded_mainloop_free) X(pa_threaded_mainloop_get_api) X(pa_threaded_mainloop_lock)                     \
  X(pa_threaded_mainloop_new) X(pa_threaded_mainloop_signal) X(pa_threaded_mainloop_start)                      \
  X(pa_threaded_mainloop_stop) X(pa_threaded_mainloop_unlock) X(pa_threaded_mainloop_wait)

struct LPulseApi {
#define SONVALE_PULSE_POINTER(name) decltype(&::name) name = nullptr;
  SONVALE_PULSE_FUNCTIONS(SONVALE_PULSE_POINTER)
#undef SONVALE_PULSE_POINTER

  // True when the library and every function are there; the first call loads.
  [[nodiscard]] static bool Load();

  static const LPulseApi* loaded;
};

// The bound functions; only after Load answered true.
inline const LPulseApi& Pa() { return *LPulseApi::loaded; }

#endif
