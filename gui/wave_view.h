#pragma once
// SVWaveView: the waveform of one document, a lane per channel, with a time
// ruler, the selection, the cursor, bookmarks and regions. It draws from the
// cache's peak overview through the cut list and reads samples only at close
// zoom. Positions are 64-bit frames from one origin; pixels are derived.
//
// The view edits nothing but the document's selection and cursor (what the
// mouse does); every other change comes from the dispatcher, after which the
// window calls DocumentChanged.
#include <QAbstractScrollArea>

class SVFileGUI;

class SVWaveView : public QAbstractScrollArea {
  Q_OBJECT

public:
  explicit SVWaveView(QWidget* parent = nullptr);
  ~SVWaveView() override;

  // The window whose document is shown; nullptr shows nothing.
  void WindowSet(SVFileGUI* window);
  [[nodiscard]] SVFileGUI* Window() const { return window_; }
  // The document's audio, length, selection, cursor or marks changed.
  void DocumentChanged();

  // Horizontal zoom in frames per pixel column; below 1 the samples are drawn
  // as points and lines.
  void ZoomSet(double framesPerPixel);
  [[nodiscard]] double Zoom() const;
  void ZoomIn();
  void ZoomOut();
  void ZoomToFit();
  void ZoomToSelection();
  // Vertical zoom: 1 shows full scale.
  void VerticalZoomSet(double factor);
  // The frame at the left edge of the lanes.
  [[nodiscard]] long long FirstFrame() const;
  void ScrollToFrame(long long frame);
  // Pixel <-> frame, in the view's coordinates.
  [[nodiscard]] long long FrameAt(int x) const;
  [[nodiscard]] int XOf(long long frame) const;

signals:
  // The user moved the cursor or changed the selection in the document.
  void SelectionChanged();
  void ZoomChanged();

protected:
  void paintEvent(QPaintEvent* event) override;

private:
  SVFileGUI* window_ = nullptr;
};
