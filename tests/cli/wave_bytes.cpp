#include "wave_bytes.h"

#include <cstring>
#include <fstream>

std::vector<std::int16_t> Staircase16(int samples) {
  std::vector<std::int16_t> s(static_cast<std::size_t>(samples));
  for (int i = 0; i < samples; ++i) s[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(i % 30000);
  return s;
}

std::string WaveBytes16(const std::vector<std::int16_t>& samples, int channels, int rate) {
  auto u32 = [](std::uint32_t v) { return std::string(reinterpret_cast<const char*>(&v), 4); };
  auto u16 = [](std::uint16_t v) { return std::string(reinterpret_cast<const char*>(&v), 2); };
  std::string data(reinterpret_cast<const char*>(samples.data()), samples.size() * 2);
  return "RIFF" + u32(static_cast<std::uint32_t>(36 + data.size())) + "WAVEfmt " + u32(16) + u16(1) +
         u16(static_cast<std::uint16_t>(channels)) + u32(static_cast<std::uint32_t>(rate)) +
         u32(static_cast<std::uint32_t>(rate * channels * 2)) + u16(static_cast<std::uint16_t>(channels * 2)) + u16(16) +
         "data" + u32(static_cast<std::uint32_t>(data.size())) + data;
}

std::vector<std::int16_t> WaveSamples16(const std::string& bytes) {
  // Walk the chunks to "data": our writer may put tag chunks before or after it.
  std::size_t at = 12;
  while (at + 8 <= bytes.size()) {
    std::uint32_t size;
    std::memcpy(&size, bytes.data() + at + 4, 4);
    if (bytes.compare(at, 4, "data") == 0) {
      std::size_t n = std::min<std::size_t>(size, bytes.size() - at - 8) / 2;
      std::vector<std::int16_t> out(n);
      std::memcpy(out.data(), bytes.data() + at + 8, n * 2);
      return out;
    }
    at += 8 + size + (size & 1);
  }
  return {};
}

