#include "gui/time_ruler.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPalette>

#include "engine/sound_time.h"

namespace {

constexpr long long kSteps[] = {1,     2,      5,      10,     20,      50,      100,     200,    500,
                                1000,  2000,   5000,   10000,  15000,   30000,   60000,   120000, 300000,
                                600000, 900000, 1800000, 3600000};

// Frames per millisecond as a ratio: frame of ms = ms * rate / 1000.
long long FrameOfMs(long long ms, std::uint32_t rate) { return ms * static_cast<long long>(rate) / 1000; }

long long FloorDiv(long long a, long long b) {
  const long long q = a / b;
  return (a % b != 0 && a < 0) ? q - 1 : q;
}

}  // namespace

long long SVTimeRulerStepMs(const SVWaveScale& scale, std::uint32_t rate, int minPixels) {
  if (rate == 0) rate = 44100;
  // Pixels per millisecond, as columns of the frames of one step.
  auto pixels = [&](long long step) {
    return static_cast<double>(FrameOfMs(step, rate)) * static_cast<double>(scale.pixelsPerFrame) /
           static_cast<double>(scale.framesPerPixel);
  };
  for (long long step : kSteps)
    if (pixels(step) >= minPixels) return step;
  long long step = 3600000;
  while (pixels(step) < minPixels && step < (1LL << 50)) step *= 2;
  return step;
}

void SVTimeRulerLabel(long long ms, long long stepMs, char* out) {
  const LSoundTime time(ms);
  if (stepMs % 100 == 0)
    time._GetTextHMMSSF(out);
  else if (stepMs % 10 == 0)
    time._GetTextHMMSSFF(out);
  else
    time._GetTextHMMSSFFF(out);
}

void SVTimeRulerPaint(QPainter& painter, const QRect& area, const SVWaveScale& scale, long long firstColumn,
                      std::uint32_t rate, const QPalette& palette) {
  if (rate == 0) rate = 44100;
  painter.save();
  painter.setClipRect(area);
  painter.fillRect(area, palette.color(QPalette::Button));
  painter.setPen(palette.color(QPalette::Mid));
  painter.drawLine(area.left(), area.bottom(), area.right(), area.bottom());
  const QFontMetrics metrics(painter.font());
  const int labelWidth = metrics.horizontalAdvance(QStringLiteral("00:00:00.000")) + 12;
  const long long step = SVTimeRulerStepMs(scale, rate, labelWidth);
  // Five minor ticks per step where they stay apart and fall on whole milliseconds.
  const long long minor = step % 5 == 0 && SVTimeRulerStepMs(scale, rate, 6) <= step / 5 ? step / 5 : step;
  const long long firstMs = FloorDiv(scale.FrameOfColumn(firstColumn) * 1000, rate);
  const long long lastMs = (scale.FrameOfColumn(firstColumn + area.width() + 1) + 1) * 1000 / rate + step;
  painter.setPen(palette.color(QPalette::ButtonText));
  char text[32];
  for (long long ms = FloorDiv(firstMs, step) * step - step; ms <= lastMs; ms += minor) {
    if (ms < 0) continue;
    const long long x = scale.ColumnOfFrame(FrameOfMs(ms, rate)) - firstColumn + area.left();
    if (x < area.left() - labelWidth || x > area.right()) continue;
    const bool major = ms % step == 0;
    const int tick = major ? area.height() / 2 : area.height() / 5;
    painter.drawLine(static_cast<int>(x), area.bottom() - tick, static_cast<int>(x), area.bottom());
    if (!major) continue;
    SVTimeRulerLabel(ms, step, text);
    painter.drawText(static_cast<int>(x) + 3, area.top() + metrics.ascent() + 1, QString::fromUtf8(text));
  }
  painter.restore();
}
