#pragma once
// The time ruler above the waveform: labelled ticks at a step in milliseconds
// that keeps the labels apart at any zoom, in the time forms of LSoundTime
// (tenths, hundredths or milliseconds, as fine as the step needs).
#include <cstdint>

#include <QRect>

#include "app/wave_scale.h"

class QPainter;
class QPalette;

// The step between labelled ticks: the smallest of 1, 2, 5 times a power of
// ten milliseconds (seconds and minutes by 1, 2, 5, 10, 15, 30; hours by
// whole hours) that puts labels at least minPixels apart.
[[nodiscard]] long long SVTimeRulerStepMs(const SVWaveScale& scale, std::uint32_t rate, int minPixels);

// The label of a tick at ms for a step: the coarsest form that shows the step.
void SVTimeRulerLabel(long long ms, long long stepMs, char* out);

// Paints the ruler into area; column firstColumn of the scale is at area's left edge.
void SVTimeRulerPaint(QPainter& painter, const QRect& area, const SVWaveScale& scale, long long firstColumn,
                      std::uint32_t rate, const QPalette& palette);
