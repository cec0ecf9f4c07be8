#include "formats/sound_file.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <strings.h>

#include "base/file_stream.h"
#include "base/memory_stream.h"
#include "base/platform_file.h"
#include "engine/channel_map_source.h"
#include "engine/resample_source.h"
#include "engine/source_to_sink.h"
#include "formats/empty_stream.h"
#include "formats/ffmpeg_source.h"
#include "formats/open_error.h"
#include "formats/sound_file_kind_table.h"
#include "formats/wav_tags.h"

namespace {

constexpr const char* kLayoutNames[] = {"pcm8", "pcm16", "pcm24", "pcm32", "float", "alaw", "ulaw", "ima", "gsm"};

// Extensions of formats that only FFmpeg reads here: without it they answer code 7.
constexpr const char* kFFmpegExtensions[] = {"mp3", "mp2", "flac", "ogg",  "oga", "opus", "spx", "m4a",  "m4b",
                                             "aac", "mp4", "mov",  "mkv",  "mka", "webm", "avi", "wma",  "wmv",
                                             "asf", "amr", "gsm",  "au",   "snd", "caf",  "w64", "rf64", "ac3",
                                             "3gp", "flv", "mpg",  "mpeg", "ape", "wv",   "dts"};

constexpr int kKbit = 1000;
constexpr std::size_t kSniffBytes = 12;
constexpr std::uint32_t kDefaultRate = 44100;
constexpr int kDefaultChannels = 2;

const char* const kWriteFailed =
    "Die Datei \"%s\" kann nicht geschrieben werden. Überprüfen Sie, ob der Ordner existiert und Sie Schreibzugriff "
    "haben.";

// The extension of the file name in path, in lower case, without the dot.
std::string Extension(const char* path) {
  if (!path) return {};
  const char* slash = std::strrchr(path, '/');
  const char* name = slash ? slash + 1 : path;
  const char* dot = std::strrchr(name, '.');
  if (!dot || dot == name) return {};
  std::string ext = dot + 1;
  for (char& c : ext) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  return ext;
}

// Where the bytes come from: a file (opened anew for every reader that looks at
// it) or a block of memory.
class Origin {
public:
  explicit Origin(const char* path) : path_(path ? path : "") {}
  Origin(const unsigned char* data, std::size_t size, const char* name)
      : path_(name ? name : ""), data_(data), size_(size), memory_(true) {}

  // Null when the file cannot be opened.
  [[nodiscard]] std::unique_ptr<LByteStream> Open() const {
    if (memory_) return std::make_unique<LMemoryStream>(data_, size_);
    const int fd = LFileOpen(path_.c_str(), kLFileRead, LFileLock::Shared);
    if (fd < 0) return nullptr;
    return std::make_unique<LFileStream>(fd);
  }
  const char* Name() const { return path_.c_str(); }
  LSoundFileOpener Opener() const {
    return [this] { return Open(); };
  }

private:
  std::string path_;
  const unsigned char* data_ = nullptr;
  std::size_t size_ = 0;
  bool memory_ = false;
};

LSoundSource OpenFFmpeg(const Origin& origin, LSoundFileInfo* info) {
  auto stream = origin.Open();
  if (!stream) return LSoundSource::Error(kLSourceCannotOpen);
  return LFFmpegSource::Open(std::move(stream), origin.Name(), info);
}

// Codes after which another reader may still succeed.
bool WorthAnotherReader(unsigned char code) {
  return code == kLSourceDamaged || code == kLSourceUnsupported || code == kLSourceCodecMissing;
}

LSoundSource OpenAny(const Origin& origin, LSoundFileInfo* out) {
  LSoundFileInfo scratch;
  LSoundFileInfo* info = out ? out : &scratch;
  // The kind whose own reader the content names, if any.
  const LSoundFileKindRow* sniffed = nullptr;
  {
    auto stream = origin.Open();
    if (!stream) return LSoundSource::Error(kLSourceCannotOpen);
    unsigned char head[kSniffBytes] = {};
    const long long n = stream->Read(head, sizeof head);
    const std::size_t got = n > 0 ? static_cast<std::size_t>(n) : 0;
    for (const LSoundFileKindRow* row : LSoundFileKindRows()) {
      if (row->sniff && row->sniff(head, got, *stream)) {
        sniffed = row;
        break;
      }
    }
  }
  const std::string ext = Extension(origin.Name());

  // Our own reader first when the content names it.
  LSoundSource own;
  LSoundFileInfo ownInfo;
  if (sniffed) {
    own = sniffed->open(origin.Opener(), &ownInfo);
    // A damaged WAVE file keeps our reader's answer: FFmpeg would read it by other rules.
    const bool damagedWave = sniffed->kind == LSoundFileKind::kWave && own.GetErrorCode() == kLSourceDamaged;
    if (!own.IsError() || damagedWave || !WorthAnotherReader(own.GetErrorCode())) {
      *info = ownInfo;
      return own;
    }
  }

  LSoundFileInfo ffInfo;
  LSoundSource ff;
  if (LFFmpegSource::IsAvailable()) {
    ff = OpenFFmpeg(origin, &ffInfo);
    if (!ff.IsError()) {
      *info = ffInfo;
      return ff;
    }
  }
  // What our writers make of no sound, which FFmpeg refuses.
  if (auto stream = origin.Open()) {
    LSoundFileInfo emptyInfo;
    LSoundSource empty = LOpenEmptyStream(*stream, &emptyInfo);
    if (!empty.IsError()) {
      *info = emptyInfo;
      return empty;
    }
  }
  // Our reader's answer names the codec better than FFmpeg's refusal.
  if (!own.IsEmpty()) {
    *info = ownInfo;
    return own;
  }

  // The extension second.
  LSoundFileKind named;
  if (LSoundFileKindFromName(ext.c_str(), &named)) {
    const LSoundFileKindRow& row = LSoundFileKindRowOf(named);
    if (row.open) {
      LSoundSource byName = row.open(origin.Opener(), &ownInfo);
      if (!byName.IsError()) {
        *info = ownInfo;
        return byName;
      }
    }
  }
  if (!ff.IsEmpty() && ff.GetErrorCode() == kLSourceCodecMissing) {
    *info = ffInfo;
    return ff;
  }
  if (!LFFmpegSource::IsAvailable()) {
    for (const char* e : kFFmpegExtensions) {
      if (ext == e) {
        info->codecName = info->codecLongName = kLFFmpegCodecName;
        return LSoundSource::Error(kLSourceCodecMissing);
      }
    }
  }
  return LSoundSource::Error(kLSourceUnsupported);
}


// Passes a source through and keeps the largest magnitude it gave.
class LSRCPeak final : public LSoundSourceBase {
public:
  explicit LSRCPeak(LSoundSource source)
      : LSoundSourceBase(source.GetSampleRate(), static_cast<std::uint8_t>(source.GetChannels())),
        source_(std::move(source)) {}
  void Read(float* buffer, long long frames) override {
    source_.Read(buffer, frames);
    const long long n = frames > 0 ? frames * GetChannels() : 0;
    // Eight running peaks the compiler keeps in one vector; NaN is passed over as before.
    float lanes[8] = {};
    long long i = 0;
    for (; i + 8 <= n; i += 8) {
      for (int k = 0; k < 8; ++k) {
        const float v = std::fabs(buffer[i + k]);
        lanes[k] = v > lanes[k] ? v : lanes[k];
      }
    }
    for (; i < n; ++i) peak_ = std::max(peak_, std::fabs(buffer[i]));
    for (float lane : lanes) peak_ = std::max(peak_, lane);
  }
  long long GetPositionSample() const override { return source_.GetPositionSample(); }
  long long GetEndSample() const override { return source_.GetEndSample(); }
  void Seek(long long frame) override { source_.Seek(frame); }
  float Peak() const { return peak_; }

private:
  LSoundSource source_;
  float peak_ = 0.0f;
};

// Whether the format stores integers, which hold nothing beyond full scale.
bool IntegerFormat(const LSoundFileFormat& f) {
  switch (f.kind) {
    case LSoundFileKind::kWave:
    case LSoundFileKind::kRF64:
      return f.layout != LSoundFileLayout::kFloat;
    case LSoundFileKind::kAiff:
    case LSoundFileKind::kFlac:
      return true;
    case LSoundFileKind::kRaw:
      return f.raw.formatCode != 7 && f.raw.formatCode != 8;  // the float codes
    case LSoundFileKind::kMP3:
    case LSoundFileKind::kOgg:
    case LSoundFileKind::kOpus:
      return false;
  }
  return false;
}

bool IsMarkerKey(const std::string& key) { return key.rfind("marker_", 0) == 0; }

std::string Fill(const char* text, const char* path) {
  std::string out = text;
  if (auto at = out.find("%s"); at != std::string::npos) out.replace(at, 2, path ? path : "");
  return out;
}

}  // namespace

bool LSoundFileKindFromName(const char* name, LSoundFileKind* kind) {
  if (!name) return false;
  for (const LSoundFileKindRow* row : LSoundFileKindRows()) {
    for (const char* n : row->names) {
      if (n && strcasecmp(name, n) == 0) {
        *kind = row->kind;
        return true;
      }
    }
  }
  return false;
}

const char* LSoundFileKindName(LSoundFileKind kind) { return LSoundFileKindRowOf(kind).names[0]; }

bool LSoundFileLayoutFromName(const char* name, LSoundFileLayout* layout) {
  if (!name) return false;
  for (std::size_t i = 0; i < std::size(kLayoutNames); ++i) {
    if (strcasecmp(name, kLayoutNames[i]) == 0) {
      *layout = static_cast<LSoundFileLayout>(i);
      return true;
    }
  }
  return false;
}

const char* LSoundFileLayoutName(LSoundFileLayout layout) {
  const auto i = static_cast<std::size_t>(layout);
  return i < std::size(kLayoutNames) ? kLayoutNames[i] : "";
}

bool LSoundFileKindForPath(const char* path, LSoundFileKind* kind) {
  const std::string ext = Extension(path);
  return !ext.empty() && LSoundFileKindFromName(ext.c_str(), kind);
}

bool LSoundFileKindHolds(LSoundFileKind kind, LSoundFileLayout layout) {
  return (LSoundFileKindRowOf(kind).layouts >> static_cast<unsigned>(layout)) & 1u;
}

namespace {

// The layout a kind holds that comes nearest to the one asked for: no fewer bits where it can.
LSoundFileLayout NearestLayout(LSoundFileKind kind, LSoundFileLayout layout) {
  using L = LSoundFileLayout;
  if (LSoundFileKindHolds(kind, layout)) return layout;
  const L wider[] = {layout == L::kFloat || layout == L::kPcm32 ? L::kPcm32 : L::kPcm16, L::kPcm24, L::kPcm16};
  for (L l : wider) {
    if (LSoundFileKindHolds(kind, l)) return l;
  }
  return L::kPcm16;
}

bool LayoutOfCodec(const LSoundFileInfo& info, LSoundFileLayout* layout) {
  using L = LSoundFileLayout;
  const std::string& c = info.codecName;
  if (c == "pcm_alaw") *layout = L::kALaw;
  else if (c == "pcm_mulaw") *layout = L::kULaw;
  else if (c == "adpcm_ima_wav") *layout = L::kIma;
  else if (c == "gsm_ms") *layout = L::kGsm;
  else if (c.rfind("pcm_f", 0) == 0) *layout = L::kFloat;
  else if (c.rfind("pcm_", 0) == 0 || c == "flac" || c == "alac" || c == "wavpack") {
    const int bits = info.bitsPerSample;
    if (bits <= 0) return false;
    *layout = bits <= 8 ? L::kPcm8 : bits <= 16 ? L::kPcm16 : bits <= 24 ? L::kPcm24 : L::kPcm32;
  } else {
    return false;
  }
  return true;
}

}  // namespace

bool LSoundFileFormatOf(const LSoundFileInfo& info, LSoundFileFormat* format) {
  const std::string& f = info.formatName;
  const std::string& c = info.codecName;
  LSoundFileFormat out;
  if (f == "wav" || f == "w64") {
    out.kind = LSoundFileKind::kWave;
  } else if (f == "aiff") {
    out.kind = LSoundFileKind::kAiff;
  } else if (f == "flac") {
    out.kind = LSoundFileKind::kFlac;
  } else if (c == "mp3") {
    out.kind = LSoundFileKind::kMP3;
  } else if (c == "vorbis") {
    out.kind = LSoundFileKind::kOgg;
  } else if (c == "opus") {
    out.kind = LSoundFileKind::kOpus;
  } else if (c.rfind("pcm_", 0) == 0 || c == "alac" || c == "wavpack") {
    out.kind = LSoundFileKind::kWave;  // other lossless containers come back as WAVE
  } else {
    return false;
  }
  if (!LayoutOfCodec(info, &out.layout)) out.layout = LSoundFileLayout::kPcm16;
  if (out.kind == LSoundFileKind::kMP3 || out.kind == LSoundFileKind::kOgg || out.kind == LSoundFileKind::kOpus) {
    out.bitRate = static_cast<int>((info.bitRate + kKbit / 2) / kKbit);
  }
  *format = out;
  return true;
}

bool LSoundFileFormatChoose(const std::string& target, const std::string& name, const LSoundFileFormat* original,
                            LSoundFileFormat* format, std::string* message) {
  LSoundFileLayout layout = original ? original->layout : LSoundFileLayout::kPcm16;
  bool layoutNamed = false;
  LSoundFileKind kind;
  const bool byPath = LSoundFileKindForPath(target.c_str(), &kind);
  if (!name.empty()) {
    if (LSoundFileLayoutFromName(name.c_str(), &layout)) {
      layoutNamed = true;
      // A layout name keeps the target's kind ("out.aiff --to pcm24").
      if (!byPath) kind = original ? original->kind : LSoundFileKind::kWave;
    } else if (!LSoundFileKindFromName(name.c_str(), &kind)) {
      *message = "Unbekanntes Format \"" + name +
                 "\". Möglich sind wav, rf64, aiff, mp3, flac, ogg, opus, raw und die Sample-Formate pcm8, pcm16, "
                 "pcm24, pcm32, float, alaw, ulaw, ima, gsm.";
      return false;
    }
  } else if (!byPath) {
    *message = "Das Format von \"" + target + "\" lässt sich nicht an der Endung erkennen. Bitte --to FORMAT angeben.";
    return false;
  }
  if (kind == LSoundFileKind::kRaw) {
    *message = "Eine Datei ohne Dateikopf wie \"" + target +
               "\" braucht ihr Sample-Format: bitte --raw RATE,KANÄLE,CODE angeben.";
    return false;
  }
  if (layoutNamed && !LSoundFileKindHolds(kind, layout)) {
    *message = std::string("Das Format ") + LSoundFileKindName(kind) + " kann keine Samples als " +
               LSoundFileLayoutName(layout) + " speichern; \"" + target + "\" wird nicht geschrieben.";
    return false;
  }
  format->kind = kind;
  format->layout = NearestLayout(kind, layout);
  format->bitRate = original && original->kind == kind ? original->bitRate : 0;
  return true;
}

bool LSoundFileQualityParse(const std::string& text, LSoundFileFormat* format, std::string* message) {
  struct Range {
    LSoundFileKind kind;
    int minKbit, maxKbit;
    int minQuality, maxQuality;  // equal when the kind has no quality scale
  };
  constexpr Range kRanges[] = {{LSoundFileKind::kMP3, 8, 320, 0, 9},
                               {LSoundFileKind::kOgg, 32, 500, -1, 10},
                               {LSoundFileKind::kOpus, 6, 510, 0, 0}};
  const Range* range = nullptr;
  for (const Range& r : kRanges) {
    if (r.kind == format->kind) range = &r;
  }
  if (!range) {
    *message = std::string("--quality gilt nur für mp3, ogg und opus, nicht für ") + LSoundFileKindName(format->kind) +
               ".";
    return false;
  }
  const bool kbit = !text.empty() && (text.back() == 'k' || text.back() == 'K');
  const std::string number = kbit ? text.substr(0, text.size() - 1) : text;
  char* end = nullptr;
  const long value = number.empty() ? 0 : std::strtol(number.c_str(), &end, 10);
  const bool parsed = !number.empty() && end && *end == '\0';
  const std::string kind = LSoundFileKindName(format->kind);
  if (kbit) {
    if (parsed && value >= range->minKbit && value <= range->maxKbit) {
      format->bitRate = static_cast<int>(value);
      format->quality = -2;
      return true;
    }
    *message = "--quality für " + kind + " erwartet eine Bitrate von " + std::to_string(range->minKbit) + "k bis " +
               std::to_string(range->maxKbit) + "k.";
    return false;
  }
  if (range->minQuality == range->maxQuality) {
    *message = "--quality für " + kind + " erwartet eine Bitrate, zum Beispiel 96k.";
    return false;
  }
  if (parsed && value >= range->minQuality && value <= range->maxQuality) {
    format->quality = static_cast<int>(value);
    format->bitRate = 0;
    return true;
  }
  *message = "--quality für " + kind + " erwartet eine Qualität von " + std::to_string(range->minQuality) + " bis " +
             std::to_string(range->maxQuality) + (format->kind == LSoundFileKind::kMP3 ? " (0 ist die beste)" : " (10 ist die beste)") +
             " oder eine Bitrate wie 192k.";
  return false;
}

std::vector<std::string> LSoundFile::TagsNotHeld(const LSoundFileFormat& format) {
  std::vector<std::string> out;
  for (const LFileTag& tag : format.tags) {
    const std::string key = tag.key.c_str();
    if (tag.value.empty() || IsMarkerKey(key)) continue;
    const bool held = LSoundFileKindRowOf(format.kind).holdsTag(key);
    if (!held) out.push_back(key + "=" + tag.value.c_str());
  }
  return out;
}

std::string LSoundFileSaveWarnings(const LSoundFileSaveNotes& notes, const LSoundFileFormat& format,
                                   const char* path) {
  std::string out;
  if (notes.peak > 1.0f) {
    char db[32];
    std::snprintf(db, sizeof db, "%.1f", 20.0 * std::log10(static_cast<double>(notes.peak)));
    const bool wraps = format.layout == LSoundFileLayout::kPcm24 || format.layout == LSoundFileLayout::kPcm32;
    out += std::string("Warnung: Die Spitzen liegen ") + db + " dB über der Vollaussteuerung; in \"" + (path ? path : "") +
           "\" (" + LSoundFileKindName(format.kind) + ", ganzzahlig) sind sie " +
           (wraps ? "übergelaufen" : "abgeschnitten") +
           ". Vorher normalisieren oder als float speichern, um sie zu behalten.\n";
  }
  if (!notes.droppedTags.empty()) {
    out += std::string("Warnung: Das Format ") + LSoundFileKindName(format.kind) +
           " hat keinen Platz für diese Tags; sie fehlen in \"" + (path ? path : "") + "\":";
    for (std::size_t i = 0; i < notes.droppedTags.size(); ++i) out += (i ? ", " : " ") + notes.droppedTags[i];
    out += "\n";
  }
  return out;
}

LSoundSource LSoundFile::OpenSource(const char* path, LSoundFileInfo* info) {
  if (!path) return LSoundSource::Error(kLSourceCannotOpen);
  return OpenAny(Origin(path), info);
}

LSoundSource LSoundFile::OpenSource(const unsigned char* data, std::size_t size, const char* name,
                                    LSoundFileInfo* info) {
  if (!data && size > 0) return LSoundSource::Error(kLSourceCannotOpen);
  return OpenAny(Origin(data, size, name), info);
}

LSoundSource LSoundFile::OpenSource(const char* path, const LRawSettings& raw, LSoundFileInfo* info) {
  if (!path || !LFileExists(path)) return LSoundSource::Error(kLSourceCannotOpen);
  if (info) {
    *info = LSoundFileInfo();
    info->formatName = "raw";
    info->formatLongName = "Rohdaten";
  }
  return LRawFile::OpenSource(path, raw);
}

bool LSoundFile::Describe(const char* path, LSoundFileInfo* info) {
  if (!path || !info) return false;
  const Origin origin(path);
  bool own = false;
  {
    auto stream = origin.Open();
    if (!stream) return false;
    unsigned char head[kSniffBytes] = {};
    if (stream->Read(head, sizeof head) != static_cast<long long>(sizeof head)) return !OpenAny(origin, info).IsError();
    // Files our readers take are described by opening them, which decodes nothing.
    for (const LSoundFileKindRow* row : LSoundFileKindRows()) {
      own = own || (row->sniff && row->sniff(head, sizeof head, *stream));
    }
  }
  if (!own && LFFmpegSource::IsAvailable() && LFFmpegSource::Describe(origin.Open(), path, info)) return true;
  *info = LSoundFileInfo();
  return !OpenAny(origin, info).IsError();
}

std::string LSoundFile::OpenErrorMessage(const LSoundSource& source, const char* path, const LSoundFileInfo& info) {
  const unsigned char code = source.GetErrorCode();
  return LOpenErrorMessage(code, path,
                           code == kLSourceCodecMissing && !info.codecName.empty() ? info.codecName.c_str() : nullptr);
}

const char* LSoundFile::MissingCodec(const LSoundFileFormat& format) {
  return LSoundFileKindRowOf(format.kind).missingCodec();
}

LSoundSink LSoundFile::OpenSink(const char* path, const LSoundFileFormat& format, std::uint32_t sampleRate,
                                int channels) {
  if (!path) return LSoundSink::Error();
  const std::uint32_t rate = format.sampleRate ? format.sampleRate : sampleRate;
  const int ch = std::clamp(format.channels > 0 ? format.channels : channels, 1, 255);
  return LSoundFileKindRowOf(format.kind).sink(path, format, rate, ch);
}

LSoundSink LSoundFile::OpenSink(const char* path, const LSoundFileFormat& format) {
  return OpenSink(path, format, kDefaultRate, kDefaultChannels);
}

LSoundSource LSoundFile::AdaptSource(LSoundSource source, const LSoundSink& sink) {
  const int channels = sink.GetChannels();
  // Fewer channels are made before the rate changes, more after, so the converter does the least work.
  if (channels < source.GetChannels()) source = LSRCChannelMap::Convert(std::move(source), channels);
  source = LSRCResample::Convert(std::move(source), sink.GetSampleRate());
  return LSRCChannelMap::Convert(std::move(source), channels);
}

LProcessResult LSoundFile::Save(LProcessInterface& process, LSoundSource source, const char* path,
                                const LSoundFileFormat& format, const char* title, LSoundFileSaveNotes* notes) {
  if (source.IsError()) {
    process.SetError(Fill(kWriteFailed, path).c_str());
    return kLProcessFailed;
  }
  if (const char* missing = MissingCodec(format)) {
    process.SetError(LOpenErrorMessage(kLSourceCodecMissing, path, missing).c_str());
    return kLProcessFailed;
  }
  LSoundSink sink = OpenSink(path, format, source.GetSampleRate(), source.GetChannels());
  if (sink.HasError()) {
    process.SetError(Fill(kWriteFailed, path).c_str());
    return kLProcessFailed;
  }
  const std::uint32_t rate = sink.GetSampleRate();
  const std::uint32_t sourceRate = source.GetSampleRate();
  const long long from = source.GetPositionSample();
  LSoundSource adapted = AdaptSource(std::move(source), sink);
  // A converter counts from 0: it is set to where the source stands.
  if (from != 0 && rate != sourceRate) {
    adapted.Seek(static_cast<long long>((static_cast<__int128>(from) * rate + sourceRate / 2) / sourceRate));
  }
  if (adapted.IsError()) {
    process.SetError(LOpenErrorMessage(kLSourceCodecMissing, path, kLResampleCodecName).c_str());
    return kLProcessFailed;
  }
  LSRCPeak* peak = nullptr;
  if (notes && IntegerFormat(format)) {
    peak = new LSRCPeak(std::move(adapted));
    adapted = LSoundSource(peak);
  }
  LPRSourceToSink job(title ? title : "", adapted, std::move(sink), true);
  const LProcessResult result = Process(process, job);
  if (notes) {
    notes->peak = peak ? peak->Peak() : 0.0f;
    notes->droppedTags = TagsNotHeld(format);
  }
  if (result == kLProcessFailed) process.SetError(Fill(kWriteFailed, path).c_str());
  if (result != kLProcessSuccess) return result;
  if (format.kind == LSoundFileKind::kWave && !format.tags.Empty() &&
      LWavTagsWrite(path, format.tags) != LWavTagsResult::Ok) {
    process.SetError(Fill(kWriteFailed, path).c_str());
    return kLProcessFailed;
  }
  return kLProcessSuccess;
}
