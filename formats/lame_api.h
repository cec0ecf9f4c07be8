#pragma once
// LLameApi: the LAME functions the MP3 writer calls, bound at run time from the
// library the build was made against (see LFFmpegApi for why). Load binds once
// per process, from any thread; after it answered true, Lame() gives the table.
#ifdef SONVALE_HAVE_LAME

#include <lame/lame.h>

#define SONVALE_LAME_FUNCTIONS(X)                                                                       \
  X(lame_close) X(lame_encode_buffer_ieee_float) X(lame_encode_buffer_interleaved_ieee_float)            \
  X(lame_encode_flush) X(lame_get_lametag_frame) X(lame_init) X(lame_init_params) X(lame_set_VBR)        \
  X(lame_set_VBR_quality) X(lame_set_bWriteVbrTag) X(lame_set_brate) X(lame_set_in_samplerate)           \
  X(lame_set_mode) X(lame_set_num_channels) X(lame_set_out_samplerate) X(lame_set_write_id3tag_automatic)

struct LLameApi {
#define SONVALE_LAME_POINTER(name) decltype(&::name) name = nullptr;
  SONVALE_LAME_FUNCTIONS(SONVALE_LAME_POINTER)
#undef SONVALE_LAME_POINTER

  // True when the library and every function are there; the first call loads.
  [[nodiscard]] static bool Load();

  static const LLameApi* loaded;
};

// The bound functions; only after Load answered true.
inline const LLameApi& Lame() { return *LLameApi::loaded; }

#endif
