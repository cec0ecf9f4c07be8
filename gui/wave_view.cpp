#include "gui/wave_view.h"

SVWaveView::SVWaveView(QWidget* parent) : QAbstractScrollArea(parent) {}
SVWaveView::~SVWaveView() = default;

void SVWaveView::WindowSet(SVFileGUI* window) {
  window_ = window;
  viewport()->update();
}
void SVWaveView::DocumentChanged() { viewport()->update(); }
void SVWaveView::ZoomSet(double) {}
double SVWaveView::Zoom() const { return 1.0; }
void SVWaveView::ZoomIn() {}
void SVWaveView::ZoomOut() {}
void SVWaveView::ZoomToFit() {}
void SVWaveView::ZoomToSelection() {}
void SVWaveView::VerticalZoomSet(double) {}
long long SVWaveView::FirstFrame() const { return 0; }
void SVWaveView::ScrollToFrame(long long) {}
long long SVWaveView::FrameAt(int x) const { return x; }
int SVWaveView::XOf(long long frame) const { return static_cast<int>(frame); }
void SVWaveView::paintEvent(QPaintEvent*) {}
