#pragma once
// SVWaveScale: how the waveform's pixel columns map to frames at one zoom.
// Columns are counted from frame 0 of the document, so a column's frames come
// from one origin by a multiplication: column g shows frames [g * fpp,
// (g + 1) * fpp) when zoomed out, and frame floor(g / ppf) when zoomed in past
// one frame per pixel. Both factors are integers and everything is 64-bit, so
// no position drifts or jitters however deep the zoom or long the document.
#include <algorithm>
#include <cmath>

// The closest zoom: a million times the length of a day at 44.1 kHz still fits
// into a column, and a frame is at most 256 pixels wide.
inline constexpr long long kSVWaveMaxFramesPerPixel = 1LL << 42;
inline constexpr long long kSVWaveMaxPixelsPerFrame = 256;

struct SVWaveScale {
  long long framesPerPixel = 1;  // >= 1
  long long pixelsPerFrame = 1;  // >= 1, above 1 only while framesPerPixel is 1

  // The nearest scale to a zoom in frames per pixel (below 1: 1 / pixels per frame).
  [[nodiscard]] static SVWaveScale FromZoom(double framesPerPixel) {
    SVWaveScale scale;
    if (!(framesPerPixel > 0.0)) return scale;
    if (framesPerPixel >= 1.0) {
      scale.framesPerPixel = static_cast<long long>(
          std::min(std::llround(std::min(framesPerPixel, 1e15)), kSVWaveMaxFramesPerPixel));
    } else {
      scale.pixelsPerFrame =
          std::clamp(static_cast<long long>(std::llround(1.0 / framesPerPixel)), 1LL, kSVWaveMaxPixelsPerFrame);
    }
    return scale;
  }
  [[nodiscard]] double Zoom() const {
    return pixelsPerFrame > 1 ? 1.0 / static_cast<double>(pixelsPerFrame) : static_cast<double>(framesPerPixel);
  }
  [[nodiscard]] bool IsPoints() const { return pixelsPerFrame > 1; }

  // The first frame column shows (the frame it shows, zoomed in).
  [[nodiscard]] long long FrameOfColumn(long long column) const {
    return pixelsPerFrame > 1 ? FloorDiv(column, pixelsPerFrame) : column * framesPerPixel;
  }
  // The column that shows frame (zoomed in: the first of its columns).
  [[nodiscard]] long long ColumnOfFrame(long long frame) const {
    return pixelsPerFrame > 1 ? frame * pixelsPerFrame : FloorDiv(frame, framesPerPixel);
  }
  // Columns needed to show frames [0, frames).
  [[nodiscard]] long long ColumnsFor(long long frames) const {
    return pixelsPerFrame > 1 ? frames * pixelsPerFrame : (frames + framesPerPixel - 1) / framesPerPixel;
  }

  friend bool operator==(const SVWaveScale&, const SVWaveScale&) = default;

private:
  [[nodiscard]] static long long FloorDiv(long long a, long long b) {
    const long long q = a / b;
    return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
  }
};
