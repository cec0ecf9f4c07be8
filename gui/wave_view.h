#pragma once
// SVWaveView: the waveform of one document, a lane per channel, with a time
// ruler, the selection, the cursor, bookmarks and regions. It draws from the
// cache's peak overview through the cut list and reads samples only at close
// zoom. Positions are 64-bit frames from one origin; pixels are derived.
//
// The view edits nothing but the document's selection, its cursor and which
// channel is edited alone (what the mouse does); every other change comes from
// the dispatcher, after which the window calls DocumentChanged.
//
// Mouse: a click sets the cursor and clears the selection (and edits all
// channels again); a drag selects from where it started; Umschalt+click moves
// the nearer end of the selection; a double-click selects everything;
// Alt+click in a lane edits that channel alone, keeping the selection, and
// Alt+drag selects in it. The wheel scrolls, Strg+wheel zooms around the
// mouse, Strg+Umschalt+wheel zooms vertically.
//
// The waveform is painted in tiles of 256 columns, kept while scrolling and
// dropped when the zoom, the height or the document's audio changes. What is
// shown (first frame, frame past the last) is kept in the document's view
// state; a state changed from outside (undo, a project) is shown again.
#include <QAbstractScrollArea>
#include <QHash>
#include <QImage>

#include "app/wave_columns.h"
#include "app/wave_scale.h"

class SVFile;
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
  [[nodiscard]] double VerticalZoom() const { return verticalZoom_; }
  // The frame at the left edge of the lanes.
  [[nodiscard]] long long FirstFrame() const;
  void ScrollToFrame(long long frame);
  // Pixel <-> frame, in the view's coordinates.
  [[nodiscard]] long long FrameAt(int x) const;
  [[nodiscard]] int XOf(long long frame) const;

  // Paints ruler, lanes and marks of a view of area's size into painter (what
  // a repaint does; also for screenshots and measurements).
  void Render(QPainter& painter, const QRect& area);
  // The lane of channel in viewport coordinates.
  [[nodiscard]] QRect LaneRect(int channel) const;
  // Tiles kept for painting; dropping them makes the next paint draw everything anew.
  [[nodiscard]] int TileCount() const { return static_cast<int>(tiles_.size()); }
  void TilesDrop();

signals:
  // The user moved the cursor or changed the selection in the document.
  void SelectionChanged();
  void ZoomChanged();

protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

private:
  [[nodiscard]] SVFile* Document() const;
  [[nodiscard]] long long Length() const;
  [[nodiscard]] int Channels() const;
  [[nodiscard]] int LanesWidth() const;
  [[nodiscard]] long long MaxScrollColumn() const;
  // Changes scale so that the frame at x stays at x.
  void ZoomAround(const SVWaveScale& scale, int x);
  void ScrollColumnSet(long long column);
  void ScrollBarUpdate();
  void ViewStateStore();
  [[nodiscard]] const QImage& Tile(long long index, int height);
  void TilePaint(QImage& image, long long index);
  void PaintMarks(QPainter& painter, const QRect& lanes);
  void SelectTo(long long frame);
  [[nodiscard]] int LaneAt(int y) const;
  // Shows frames [first, end) as closely as the width allows.
  void ShowRange(long long first, long long end);
  void KeptRangeApply();
  void TileSpare(QImage&& image);

  SVFileGUI* window_ = nullptr;
  long long length_ = 0;
  int channels_ = 0;
  unsigned long long signature_ = 0;  // of the segments the tiles show
  // What a resize or a change of length keeps in view: the whole document, a
  // range not yet shown at its proper width, or simply the zoom.
  enum class Keep { kZoom, kFit, kRange };
  Keep keep_ = Keep::kFit;
  long long keepFirst_ = 0;
  long long keepEnd_ = 0;
  long long storedFirst_ = -1;  // the view state as this view last wrote it
  long long storedEnd_ = -1;
  SVWaveScale scale_;
  long long scrollColumn_ = 0;    // the column at the left edge
  long long scrollUnit_ = 1;      // columns per step of the scroll bar
  bool scrollBarSetting_ = false;
  double verticalZoom_ = 1.0;

  SVWaveColumns columns_;
  QHash<long long, QImage> tiles_;
  std::vector<QImage> spareTiles_;  // dropped tiles whose memory is painted over again
  SVWaveScale tileScale_;
  int tileHeight_ = -1;
  double tileVerticalZoom_ = 1.0;
  std::vector<SVWaveColumn> peaks_;
  std::vector<float> samples_;

  // Mouse.
  bool pressed_ = false;
  bool dragging_ = false;
  int pressX_ = 0;
  long long anchor_ = 0;
  int wheelZoom_ = 0;  // angle not yet turned into a zoom step
};
