#pragma once
// LSoundFile: the one entry point for opening any sound file as a source and for
// saving a source to any format we write.
//
// Opening looks at the content first: RIFF/WAVE goes to our WAVE reader,
// FORM/AIFF and FORM/AIFC to our AIFF reader, everything else to FFmpeg's
// probing (MP3, FLAC, Ogg, Opus, AAC, WMA, AMR, GSM, AU, CAF, W64, RF64, the
// sound track of video files, ...). What our readers refuse for its codec goes
// to FFmpeg as well; a damaged WAVE file keeps our reader's answer. A WAVE file
// is also found behind a few leading chunks of other kinds. The extension comes
// second: it picks our readers for files whose start says nothing.
// Headerless files are opened only with explicit settings. A file that needs a
// codec this build lacks answers code 7 (the info names the codec); one that
// nobody reads answers code 5.
//
// Saving goes to the format named in LSoundFileFormat, chosen by name or by the
// target's extension. A format holds only some rates and channel counts (MP3 at
// most two channels and the MPEG rates, Opus 48000 Hz, GSM mono at 8000 Hz):
// the sink answers what it takes, and AdaptSource converts a source to it.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/process_interface.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"
#include "formats/file_tag_data_audio.h"
#include "formats/raw_file.h"
#include "formats/sound_file_info.h"

enum class LSoundFileKind : std::uint8_t { kWave, kRF64, kRaw, kAiff, kMP3, kFlac, kOgg, kOpus };

// How samples are stored: WAVE takes all; RF64 pcm16, pcm24, pcm32 and float;
// AIFF pcm8 to pcm32; FLAC pcm16 and pcm24. Others are taken to the nearest.
enum class LSoundFileLayout : std::uint8_t { kPcm8, kPcm16, kPcm24, kPcm32, kFloat, kALaw, kULaw, kIma, kGsm };

struct LSoundFileFormat {
  LSoundFileKind kind = LSoundFileKind::kWave;
  LSoundFileLayout layout = LSoundFileLayout::kPcm16;
  // Headerless files: the layout code (rate and channels follow the sound).
  LRawSettings raw;
  // kbit/s: constant bit rate of MP3, nominal rate of Vorbis and Opus; 0 for quality or the default.
  int bitRate = 0;
  // MP3 variable bit rate 0 (best) to 9, 2 when negative; Vorbis -1 to 10, the encoder's default when below -1.
  int quality = -2;
  // 0 keeps the sound's.
  std::uint32_t sampleRate = 0;
  int channels = 0;
  bool dither = false;
  LFileTagDataAudio tags;
};

// Names as the command line takes them: "wav", "rf64", "raw", "aiff", "mp3",
// "flac", "ogg", "opus" (also "wave", "aif", "aifc", "oga", "pcm"), without regard to case.
[[nodiscard]] bool LSoundFileKindFromName(const char* name, LSoundFileKind* kind);
[[nodiscard]] const char* LSoundFileKindName(LSoundFileKind kind);
// "pcm8", "pcm16", "pcm24", "pcm32", "float", "alaw", "ulaw", "ima", "gsm".
[[nodiscard]] bool LSoundFileLayoutFromName(const char* name, LSoundFileLayout* layout);
[[nodiscard]] const char* LSoundFileLayoutName(LSoundFileLayout layout);
// The kind that the target's extension names; false when it names none we write.
[[nodiscard]] bool LSoundFileKindForPath(const char* path, LSoundFileKind* kind);
// Whether the kind stores samples in the layout (lossy kinds store none).
[[nodiscard]] bool LSoundFileKindHolds(LSoundFileKind kind, LSoundFileLayout layout);

// The format a file is in, as far as its opener told (info): kind, layout and,
// for lossy codecs, the bit rate. False when the info names nothing we write.
[[nodiscard]] bool LSoundFileFormatOf(const LSoundFileInfo& info, LSoundFileFormat* format);

// Reads a --quality setting into the format, whose kind is chosen: "192k" a bit
// rate in kbit/s (MP3 8 to 320, Vorbis 32 to 500, Opus 6 to 510), a plain
// number a variable-rate quality (MP3 0 best to 9, Vorbis -1 to 10 best). False
// with a German message for a value out of range or a kind without a setting.
[[nodiscard]] bool LSoundFileQualityParse(const std::string& text, LSoundFileFormat* format, std::string* message);

// The format to save to target in. name, when not empty, is a kind ("flac") or
// a layout ("pcm24"); otherwise the target's extension names the kind. What
// neither says is kept from original (the format the sound came in, may be
// null): its layout where the kind holds it, else the nearest the kind holds,
// and a lossy codec's bit rate when the kind stays. A layout the kind cannot
// hold ("pcm16" for an MP3 target), a kind that cannot be told, and a
// headerless target (which needs its raw settings) are refused with a German
// message. The other fields of format are left as they are.
[[nodiscard]] bool LSoundFileFormatChoose(const std::string& target, const std::string& name,
                                          const LSoundFileFormat* original, LSoundFileFormat* format,
                                          std::string* message);

// What a save could not keep, for the caller to tell.
struct LSoundFileSaveNotes {
  // The largest magnitude of a sample saved into an integer layout: above 1.0
  // it was clipped (16 bits and less) or wrapped (24 and 32 bits). 0 otherwise.
  float peak = 0.0f;
  // Tags that the format has no place for.
  std::vector<std::string> droppedTags;
};
// German warnings, one a line, each ending in a newline; empty when all was kept.
[[nodiscard]] std::string LSoundFileSaveWarnings(const LSoundFileSaveNotes& notes, const LSoundFileFormat& format,
                                                 const char* path);

class LSoundFile {
public:
  // info, when given, receives the container, codec, tags and chapters (and on
  // code 7 the name of the missing codec).
  [[nodiscard]] static LSoundSource OpenSource(const char* path, LSoundFileInfo* info = nullptr);
  // A headerless file read with the given settings.
  [[nodiscard]] static LSoundSource OpenSource(const char* path, const LRawSettings& raw,
                                               LSoundFileInfo* info = nullptr);
  // Bytes in memory that outlive the source (fuzzers, tests); name hints at the format by its extension.
  [[nodiscard]] static LSoundSource OpenSource(const unsigned char* data, std::size_t size, const char* name,
                                               LSoundFileInfo* info = nullptr);
  // What OpenSource would tell of the file's format and tags, read from its
  // headers where that is cheaper than opening it (no decoding of compressed sound).
  [[nodiscard]] static bool Describe(const char* path, LSoundFileInfo* info);
  // The German message for a source that failed to open.
  [[nodiscard]] static std::string OpenErrorMessage(const LSoundSource& source, const char* path,
                                                    const LSoundFileInfo& info);

  // The writer of the format for sound of the given rate and channel count (the
  // format's own rate and channels win when set). Its error flag is raised when
  // it could not be opened or the build lacks its encoder.
  [[nodiscard]] static LSoundSink OpenSink(const char* path, const LSoundFileFormat& format, std::uint32_t sampleRate,
                                           int channels);
  // The same with the format's own rate and channels (44100 Hz and stereo where they are 0).
  [[nodiscard]] static LSoundSink OpenSink(const char* path, const LSoundFileFormat& format);
  // The source converted to the sink's rate and channel count (itself when they match).
  [[nodiscard]] static LSoundSource AdaptSource(LSoundSource source, const LSoundSink& sink);
  // The codec that the format needs and this build lacks, or nullptr.
  [[nodiscard]] static const char* MissingCodec(const LSoundFileFormat& format);

  // Writes the source from its position to its end into path in the format,
  // with its tags where the format carries them; notes, when given, receive
  // what the format could not keep. A failure sets a German message on process
  // and answers kLProcessFailed; the file may be left partly written.
  [[nodiscard]] static LProcessResult Save(LProcessInterface& process, LSoundSource source, const char* path,
                                           const LSoundFileFormat& format, const char* title = "Speichern",
                                           LSoundFileSaveNotes* notes = nullptr);
  // Keys of the tags that the format has no place for (markers aside).
  [[nodiscard]] static std::vector<std::string> TagsNotHeld(const LSoundFileFormat& format);
};
