#include "codec_fixtures.h"

#include <cctype>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>

#include "engine/sample_format.h"
#include "support/vector_source.h"
#include "wave_fixtures.h"

std::string ShellQuote(const std::string& path) {
  std::string out = "'";
  for (char c : path) {
    if (c == '\'') {
      out += "'\\''";
    } else {
      out += c;
    }
  }
  return out + "'";
}

bool FFmpegMake(const std::string& arguments) {
  return RunTool("ffmpeg -nostdin -hide_banner -loglevel error -y " + arguments);
}

bool FFmpegHasEncoder(const char* name) {
  // Asked once per run: the list does not change.
  static const std::string list = [] {
    std::string text;
    return RunTool("ffmpeg -hide_banner -encoders", &text) ? text : std::string();
  }();
  return list.find(std::string(" ") + name + " ") != std::string::npos;
}

std::vector<float> FFmpegDecode(const std::string& path, int channels, int rate, const std::string& scratch,
                                bool sixteenBits) {
  if (!FFmpegMake("-i " + ShellQuote(path) + " -map 0:a:0 -f " + (sixteenBits ? "s16le" : "f32le") + " -ac " +
                  std::to_string(channels) + " -ar " + std::to_string(rate) + " " + ShellQuote(scratch))) {
    return {};
  }
  Bytes bytes = FileBytes(scratch);
  if (sixteenBits) {
    std::vector<float> out(bytes.size() / 2);
    ConvertSamplesIn<LSF16>(out.data(), bytes.data(), static_cast<long long>(out.size()));
    return out;
  }
  std::vector<float> out(bytes.size() / sizeof(float));
  std::memcpy(out.data(), bytes.data(), out.size() * sizeof(float));
  return out;
}

std::vector<float> ReadWhole(LSoundSource& source, long long block) {
  source.Seek(0);
  return ReadFrames(source, source.GetEndSample(), block);
}

double MaxDifference(const std::vector<float>& a, const std::vector<float>& b) {
  if (a.size() != b.size()) return std::numeric_limits<double>::infinity();
  double worst = 0.0;
  for (size_t i = 0; i < a.size(); ++i) worst = std::max(worst, std::fabs(static_cast<double>(a[i]) - b[i]));
  return worst;
}

std::vector<float> SineFrames(long long frames, int channels, int rate, double hz, double peak) {
  std::vector<float> out(static_cast<size_t>(frames * channels));
  for (long long f = 0; f < frames; ++f) {
    for (int c = 0; c < channels; ++c) {
      out[static_cast<size_t>(f * channels + c)] = static_cast<float>(peak * std::sin(2.0 * M_PI * hz * f / rate + c));
    }
  }
  return out;
}

LSoundSource MemorySource(std::vector<float> frames, int channels, unsigned rate) {
  return LMakeSource<VectorSource>(std::move(frames), channels, rate);
}
