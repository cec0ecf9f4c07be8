#pragma once
// LFFmpegApi: the FFmpeg functions we call, bound at run time from the
// libraries the build was made against, so that a start that decodes nothing
// maps none of them and a machine without FFmpeg still opens what we read
// ourselves. The headers' structures are used directly, so only libraries of
// the same major version will do.
//
// Load binds everything once per process, from any thread; after it answered
// true, Av() gives the table. Builds without FFmpeg's headers never load.
#ifdef SONVALE_HAVE_FFMPEG

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/mem.h>
#include <libswresample/swresample.h>
}

#define SONVALE_AVUTIL_FUNCTIONS(X)                                                                           \
  X(av_channel_layout_compare) X(av_channel_layout_copy) X(av_channel_layout_default)                          \
  X(av_channel_layout_uninit) X(av_dict_free) X(av_dict_get) X(av_dict_set) X(av_frame_alloc) X(av_frame_free) \
  X(av_frame_get_buffer) X(av_frame_make_writable) X(av_free) X(av_freep) X(av_get_bytes_per_sample)           \
  X(av_get_packed_sample_fmt) X(av_log_set_level) X(av_malloc) X(av_max_alloc) X(av_rescale_q)                 \
  X(av_rescale_q_rnd) X(av_sample_fmt_is_planar)

#define SONVALE_SWRESAMPLE_FUNCTIONS(X) \
  X(swr_alloc_set_opts2) X(swr_convert) X(swr_free) X(swr_get_out_samples) X(swr_init)

#define SONVALE_AVCODEC_FUNCTIONS(X)                                                                          \
  X(av_packet_alloc) X(av_packet_free) X(av_packet_get_side_data) X(av_packet_new_side_data)                   \
  X(av_packet_rescale_ts) X(av_packet_shrink_side_data) X(av_packet_unref) X(av_get_exact_bits_per_sample)     \
  X(avcodec_alloc_context3) X(avcodec_descriptor_get) X(avcodec_find_decoder) X(avcodec_find_encoder)          \
  X(avcodec_find_encoder_by_name) X(avcodec_free_context) X(avcodec_get_name) X(avcodec_open2)                 \
  X(avcodec_parameters_from_context) X(avcodec_parameters_to_context) X(avcodec_receive_frame)                 \
  X(avcodec_receive_packet) X(avcodec_send_frame) X(avcodec_send_packet)

#define SONVALE_AVFORMAT_FUNCTIONS(X)                                                                         \
  X(av_find_best_stream) X(av_interleaved_write_frame) X(av_read_frame) X(av_seek_frame) X(av_write_trailer)   \
  X(avformat_alloc_context) X(avformat_alloc_output_context2) X(avformat_close_input)                          \
  X(avformat_find_stream_info) X(avformat_free_context) X(avformat_new_stream) X(avformat_open_input)          \
  X(avformat_seek_file) X(avformat_write_header) X(avio_alloc_context) X(avio_context_free) X(avio_flush)

struct LFFmpegApi {
#define SONVALE_FFMPEG_POINTER(name) decltype(&::name) name = nullptr;
  SONVALE_AVUTIL_FUNCTIONS(SONVALE_FFMPEG_POINTER)
  SONVALE_SWRESAMPLE_FUNCTIONS(SONVALE_FFMPEG_POINTER)
  SONVALE_AVCODEC_FUNCTIONS(SONVALE_FFMPEG_POINTER)
  SONVALE_AVFORMAT_FUNCTIONS(SONVALE_FFMPEG_POINTER)
#undef SONVALE_FFMPEG_POINTER

  // True when every library and function is there; the first call loads.
  [[nodiscard]] static bool Load();

  static const LFFmpegApi* loaded;
};

// The bound functions; only after Load answered true.
inline const LFFmpegApi& Av() { return *LFFmpegApi::loaded; }

#endif
