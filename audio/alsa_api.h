#pragma once
// LAlsaApi: the libasound functions the ALSA backend calls, bound at run time
// when the first backend is made (see LPulseApi). Load binds once per process,
// from any thread; after it answered true, Snd() gives the table.
#ifdef SONVALE_HAVE_ALSA

#include <alsa/asoundlib.h>

#define SONVALE_ALSA_FUNCTIONS(X)                                                                               \
  X(snd_device_name_free_hint) X(snd_device_name_get_hint) X(snd_device_name_hint) X(snd_lib_error_set_handler) \
  X(snd_pcm_close) X(snd_pcm_delay) X(snd_pcm_drop) X(snd_pcm_hw_params) X(snd_pcm_hw_params_any)               \
  X(snd_pcm_hw_params_free) X(snd_pcm_hw_params_malloc) X(snd_pcm_hw_params_set_access)                         \
  X(snd_pcm_hw_params_set_buffer_size_near) X(snd_pcm_hw_params_set_channels) X(snd_pcm_hw_params_set_format)   \
  X(snd_pcm_hw_params_set_period_size_near) X(snd_pcm_hw_params_set_rate) X(snd_pcm_open) X(snd_pcm_prepare)    \
  X(snd_pcm_readi) X(snd_pcm_recover) X(snd_pcm_writei)

struct LAlsaApi {
#define SONVALE_ALSA_POINTER(name) decltype(&::name) name = nullptr;
  SONVALE_ALSA_FUNCTIONS(SONVALE_ALSA_POINTER)
#undef SONVALE_ALSA_POINTER

  // True when the library and every function are there; the first call loads.
  [[nodiscard]] static bool Load();

  static const LAlsaApi* loaded;
};

// The bound functions; only after Load answered true.
inline const LAlsaApi& Snd() { return *LAlsaApi::loaded; }

#endif
