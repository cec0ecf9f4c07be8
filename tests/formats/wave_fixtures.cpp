#include "wave_fixtures.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

#include "base/memory_stream.h"
#include "formats/wave_file.h"

void PutLE16(Bytes& b, std::uint16_t v) {
  b.push_back(static_cast<unsigned char>(v));
  b.push_back(static_cast<unsigned char>(v >> 8));
}
void PutLE32(Bytes& b, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}
std::uint16_t GetLE16(const Bytes& b, size_t at) { return static_cast<std::uint16_t>(b.at(at) | b.at(at + 1) << 8); }
std::uint32_t GetLE32(const Bytes& b, size_t at) {
  return static_cast<std::uint32_t>(b.at(at)) | static_cast<std::uint32_t>(b.at(at + 1)) << 8 |
         static_cast<std::uint32_t>(b.at(at + 2)) << 16 | static_cast<std::uint32_t>(b.at(at + 3)) << 24;
}

Bytes Chunk(const char* id, const Bytes& body, long long sizeField, bool pad) {
  Bytes out(id, id + 4);
  PutLE32(out, static_cast<std::uint32_t>(sizeField >= 0 ? sizeField : static_cast<long long>(body.size())));
  out.insert(out.end(), body.begin(), body.end());
  if (pad && (body.size() & 1)) out.push_back(0);
  return out;
}

Bytes FmtBody(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate, std::uint16_t bits,
              std::uint16_t blockAlign, const Bytes* extra) {
  Bytes b;
  const std::uint16_t align = blockAlign ? blockAlign : static_cast<std::uint16_t>(channels * ((bits + 7) / 8));
  PutLE16(b, tag);
  PutLE16(b, channels);
  PutLE32(b, rate);
  PutLE32(b, rate * align);
  PutLE16(b, align);
  PutLE16(b, bits);
  if (extra) {
    PutLE16(b, static_cast<std::uint16_t>(extra->size()));
    b.insert(b.end(), extra->begin(), extra->end());
  }
  return b;
}

Bytes RiffWave(const std::vector<Bytes>& chunks) {
  Bytes body = {'W', 'A', 'V', 'E'};
  for (const Bytes& c : chunks) body.insert(body.end(), c.begin(), c.end());
  return Chunk("RIFF", body, -1, false);
}

Bytes WaveFile(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate, std::uint16_t bits, const Bytes& data) {
  return RiffWave({Chunk("fmt ", FmtBody(tag, channels, rate, bits)), Chunk("data", data)});
}

Bytes Staircase16(int frames, int channels) {
  Bytes b;
  for (int i = 0; i < frames * channels; ++i) PutLE16(b, static_cast<std::uint16_t>(i));
  return b;
}

std::unique_ptr<LByteStream> Memory(const Bytes& bytes) { return std::make_unique<LMemoryStream>(bytes); }
LSoundSource OpenWave(const Bytes& bytes) { return LWaveFile::OpenSource(Memory(bytes)); }

std::vector<float> ReadFrames(LSoundSource& source, long long frames, long long block) {
  std::vector<float> out(static_cast<size_t>(frames * source.GetChannels()));
  if (block <= 0) block = frames;
  for (long long done = 0; done < frames; done += block) {
    source.Read(out.data() + done * source.GetChannels(), std::min(block, frames - done));
  }
  return out;
}

bool HaveTool(const char* name) { return RunTool(std::string("command -v ") + name + " >/dev/null 2>&1"); }

bool RunTool(const std::string& command, std::string* output) {
  FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
  if (!pipe) return false;
  std::string text;
  char buffer[4096];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) text.append(buffer, n);
  const int status = pclose(pipe);
  if (output) *output = text;
  return status == 0;
}

SparseStream::SparseStream() : data_(std::make_shared<Data>()) {}

long long SparseStream::Read(void* buffer, long long n) {
  if (n < 0) return -1;
  n = std::max(0LL, std::min(n, data_->size - pos_));
  auto* out = static_cast<unsigned char*>(buffer);
  for (long long done = 0; done < n;) {
    const long long page = (pos_ + done) / kPage;
    const long long offset = (pos_ + done) % kPage;
    const long long m = std::min(n - done, kPage - offset);
    auto it = data_->pages.find(page);
    if (it == data_->pages.end()) {
      std::memset(out + done, 0, static_cast<size_t>(m));
    } else {
      std::memcpy(out + done, it->second.data() + offset, static_cast<size_t>(m));
    }
    done += m;
  }
  pos_ += n;
  return n;
}

long long SparseStream::Write(const void* buffer, long long n) {
  if (n < 0) return -1;
  const auto* in = static_cast<const unsigned char*>(buffer);
  for (long long done = 0; done < n;) {
    const long long page = (pos_ + done) / kPage;
    const long long offset = (pos_ + done) % kPage;
    const long long m = std::min(n - done, kPage - offset);
    Bytes& bytes = data_->pages[page];
    if (bytes.empty()) bytes.resize(kPage, 0);
    std::memcpy(bytes.data() + offset, in + done, static_cast<size_t>(m));
    done += m;
  }
  pos_ += n;
  data_->size = std::max(data_->size, pos_);
  return n;
}

bool SparseStream::Seek(long long offset) {
  if (offset < 0) return false;
  pos_ = offset;
  return true;
}

bool SparseStream::Truncate(long long size) {
  if (size < 0) return false;
  for (auto it = data_->pages.begin(); it != data_->pages.end();) {
    if (it->first * kPage >= size) {
      it = data_->pages.erase(it);
    } else {
      if ((it->first + 1) * kPage > size)
        std::fill(it->second.begin() + (size - it->first * kPage), it->second.end(), 0);
      ++it;
    }
  }
  data_->size = size;
  return true;
}
