#include "gui/wave_view.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include "app/file.h"
#include "app/file_gui.h"
#include "app/window_manager.h"
#include "gui/time_ruler.h"

namespace {

constexpr int kTileWidth = 256;
constexpr int kRulerHeight = 24;
constexpr int kRegionBand = 15;
constexpr int kDragDistance = 3;
// QScrollBar counts in int: beyond this many columns one step is several.
constexpr long long kScrollBarRange = 1LL << 30;
constexpr double kVerticalZoomMin = 0.125;
constexpr double kVerticalZoomMax = 4096.0;

const QColor kBackground(22, 30, 38);
const QColor kPastEnd(44, 44, 50);
const QColor kWave(96, 200, 128);
const QColor kCentre(58, 78, 90);
const QColor kLaneEdge(70, 70, 78);
const QColor kSelection(255, 255, 255, 64);
const QColor kCursor(255, 80, 60);
const QColor kBookmark(250, 210, 80);
const QColor kRegion(90, 150, 250, 70);
const QColor kRegionEdge(120, 170, 255);

long long FloorDiv(long long a, long long b) {
  const long long q = a / b;
  return (a % b != 0 && a < 0) ? q - 1 : q;
}

// Identifies the audio a list shows: tiles stay valid while it is unchanged.
unsigned long long ListSignature(const LCutListAudio& list) {
  unsigned long long h = 1469598103934665603ULL ^ list.GetChannels();
  auto mix = [&h](unsigned long long v) { h = (h ^ v) * 1099511628211ULL; };
  for (const LCutListSegment& s : list.Segments()) {
    mix(s.ItemNumber());
    mix(static_cast<unsigned long long>(s.length));
    mix(static_cast<unsigned long long>(s.offset));
    unsigned int gain = 0;
    static_assert(sizeof gain == sizeof s.gain);
    std::memcpy(&gain, &s.gain, sizeof gain);
    mix(gain);
  }
  return h;
}

int ClampToInt(long long v) { return static_cast<int>(std::clamp<long long>(v, INT_MIN / 4, INT_MAX / 4)); }

}  // namespace

SVWaveView::SVWaveView(QWidget* parent) : QAbstractScrollArea(parent) {
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  // Clicks give the view focus; keys it does not use go on to the window.
  setFocusPolicy(Qt::StrongFocus);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  setAccessibleName(QStringLiteral("Wellenform"));
  horizontalScrollBar()->setAccessibleName(QStringLiteral("Bildlauf"));
  ScrollBarUpdate();
}

SVWaveView::~SVWaveView() = default;

SVFile* SVWaveView::Document() const { return window_ != nullptr ? window_->File() : nullptr; }
long long SVWaveView::Length() const { return length_; }
int SVWaveView::Channels() const { return channels_; }
int SVWaveView::LanesWidth() const { return std::max(1, viewport()->width()); }

void SVWaveView::WindowSet(SVFileGUI* window) {
  window_ = window;
  signature_ = 0;
  TilesDrop();
  columns_.DocumentChanged();
  scrollColumn_ = 0;
  keep_ = Keep::kFit;
  storedFirst_ = storedEnd_ = -1;
  DocumentChanged();
}

void SVWaveView::DocumentChanged() {
  SVFile* file = Document();
  length_ = file != nullptr ? file->CutList().GetLength() : 0;
  channels_ = file != nullptr ? file->CutList().GetChannels() : 0;
  // Undo or a project put a different view state: show that range.
  if (file != nullptr && file->View().second > file->View().first &&
      (file->View().first != storedFirst_ || file->View().second != storedEnd_)) {
    keep_ = Keep::kRange;
    keepFirst_ = file->View().first;
    keepEnd_ = file->View().second;
  }
  const unsigned long long signature = file != nullptr ? ListSignature(file->CutList()) : 0;
  if (signature != signature_) {
    signature_ = signature;
    columns_.DocumentChanged();
    TilesDrop();
  }
  KeptRangeApply();
  ScrollBarUpdate();
  ScrollColumnSet(scrollColumn_);
  viewport()->update();
}

void SVWaveView::KeptRangeApply() {
  if (keep_ == Keep::kFit) {
    ShowRange(0, Length());
    keep_ = Keep::kFit;
  } else if (keep_ == Keep::kRange) {
    ShowRange(keepFirst_, keepEnd_);
    keep_ = Keep::kRange;
  }
}

// Zoom.

double SVWaveView::Zoom() const { return scale_.Zoom(); }

void SVWaveView::ZoomSet(double framesPerPixel) {
  keep_ = Keep::kZoom;
  ZoomAround(SVWaveScale::FromZoom(framesPerPixel), 0);
}

void SVWaveView::ZoomAround(const SVWaveScale& scale, int x) {
  const long long frame = FrameAt(x);
  const bool changed = !(scale == scale_);
  scale_ = scale;
  ScrollBarUpdate();
  ScrollColumnSet(scale_.ColumnOfFrame(frame) - x);
  ViewStateStore();
  viewport()->update();
  if (changed) emit ZoomChanged();
}

void SVWaveView::ShowRange(long long first, long long end) {
  const long long width = LanesWidth();
  const long long frames = std::max(end - first, 1LL);
  SVWaveScale scale;
  if (frames >= width)
    scale.framesPerPixel = std::min((frames + width - 1) / width, kSVWaveMaxFramesPerPixel);
  else
    scale.pixelsPerFrame = std::clamp(width / frames, 1LL, kSVWaveMaxPixelsPerFrame);
  const bool changed = !(scale == scale_);
  scale_ = scale;
  ScrollBarUpdate();
  ScrollColumnSet(scale_.ColumnOfFrame(first));
  ViewStateStore();
  viewport()->update();
  if (changed) emit ZoomChanged();
}

void SVWaveView::ZoomIn() {
  SVWaveScale scale = scale_;
  if (scale.framesPerPixel > 1)
    scale.framesPerPixel /= 2;
  else
    scale.pixelsPerFrame = std::min(scale.pixelsPerFrame * 2, kSVWaveMaxPixelsPerFrame);
  keep_ = Keep::kZoom;
  // Around the cursor when it is in view, else around the middle.
  const SVFile* file = Document();
  const int cursorX = file != nullptr ? XOf(file->Cursor()) : -1;
  ZoomAround(scale, cursorX >= 0 && cursorX < LanesWidth() ? cursorX : LanesWidth() / 2);
}

void SVWaveView::ZoomOut() {
  SVWaveScale scale = scale_;
  const long long fit = std::max(1LL, (Length() + LanesWidth() - 1) / LanesWidth());
  if (scale.pixelsPerFrame > 1)
    scale.pixelsPerFrame /= 2;
  else if (scale.framesPerPixel < fit)
    scale.framesPerPixel = std::min(scale.framesPerPixel * 2, fit);
  keep_ = Keep::kZoom;
  const SVFile* file = Document();
  const int cursorX = file != nullptr ? XOf(file->Cursor()) : -1;
  ZoomAround(scale, cursorX >= 0 && cursorX < LanesWidth() ? cursorX : LanesWidth() / 2);
}

void SVWaveView::ZoomToFit() {
  keep_ = Keep::kFit;
  ShowRange(0, Length());
}

void SVWaveView::ZoomToSelection() {
  const SVFile* file = Document();
  if (file == nullptr || file->Selection().IsEmpty()) return;
  keep_ = Keep::kZoom;
  ShowRange(file->Selection().start, file->Selection().end);
}

void SVWaveView::VerticalZoomSet(double factor) {
  if (!(factor > 0.0)) return;
  verticalZoom_ = std::clamp(factor, kVerticalZoomMin, kVerticalZoomMax);
  viewport()->update();
}

// Scrolling.

long long SVWaveView::FirstFrame() const { return scale_.FrameOfColumn(scrollColumn_); }

long long SVWaveView::MaxScrollColumn() const {
  return std::max(0LL, scale_.ColumnsFor(Length()) - LanesWidth());
}

void SVWaveView::ScrollToFrame(long long frame) {
  keep_ = Keep::kZoom;
  ScrollColumnSet(scale_.ColumnOfFrame(frame));
}

void SVWaveView::ScrollColumnSet(long long column) {
  column = std::clamp(column, 0LL, MaxScrollColumn());
  if (column != scrollColumn_) {
    scrollColumn_ = column;
    viewport()->update();
  }
  scrollBarSetting_ = true;
  horizontalScrollBar()->setValue(static_cast<int>(scrollColumn_ / scrollUnit_));
  scrollBarSetting_ = false;
  ViewStateStore();
}

void SVWaveView::ScrollBarUpdate() {
  const long long max = MaxScrollColumn();
  scrollUnit_ = max / kScrollBarRange + 1;
  const long long width = LanesWidth();
  QScrollBar* bar = horizontalScrollBar();
  scrollBarSetting_ = true;
  bar->setRange(0, static_cast<int>((max + scrollUnit_ - 1) / scrollUnit_));
  bar->setPageStep(static_cast<int>(std::max(1LL, width / scrollUnit_)));
  bar->setSingleStep(static_cast<int>(std::max(1LL, width / 16 / scrollUnit_)));
  bar->setValue(static_cast<int>(scrollColumn_ / scrollUnit_));
  scrollBarSetting_ = false;
}

void SVWaveView::scrollContentsBy(int, int) {
  if (scrollBarSetting_) return;
  keep_ = Keep::kZoom;
  ScrollColumnSet(static_cast<long long>(horizontalScrollBar()->value()) * scrollUnit_);
}

void SVWaveView::ViewStateStore() {
  SVFile* file = Document();
  if (file == nullptr) return;
  if (keep_ != Keep::kRange) {
    file->View().first = FirstFrame();
    file->View().second = FrameAt(LanesWidth());
  }
  storedFirst_ = file->View().first;
  storedEnd_ = file->View().second;
}

long long SVWaveView::FrameAt(int x) const { return scale_.FrameOfColumn(scrollColumn_ + x); }

int SVWaveView::XOf(long long frame) const { return ClampToInt(scale_.ColumnOfFrame(frame) - scrollColumn_); }

void SVWaveView::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  KeptRangeApply();
  ScrollBarUpdate();
  ScrollColumnSet(scrollColumn_);
}

// Painting.

QRect SVWaveView::LaneRect(int channel) const {
  const int channels = std::max(Channels(), 1);
  const int laneHeight = std::max(1, (viewport()->height() - kRulerHeight) / channels);
  return {0, kRulerHeight + channel * laneHeight, viewport()->width(), laneHeight};
}

int SVWaveView::LaneAt(int y) const {
  for (int c = 0; c < Channels(); ++c)
    if (y >= LaneRect(c).top() && y <= LaneRect(c).bottom()) return c;
  return -1;
}

void SVWaveView::TilesDrop() {
  for (QImage& image : tiles_) TileSpare(std::move(image));
  tiles_.clear();
}

void SVWaveView::TileSpare(QImage&& image) {
  // Fresh images of this size cost the system a page fault per 4 KiB; reuse them.
  constexpr std::size_t kSpareTiles = 24;
  if (spareTiles_.size() < kSpareTiles) spareTiles_.push_back(std::move(image));
}

void SVWaveView::paintEvent(QPaintEvent*) {
  QPainter painter(viewport());
  Render(painter, viewport()->rect());
}

void SVWaveView::Render(QPainter& painter, const QRect& area) {
  const std::uint32_t rate = Document() != nullptr ? Document()->CutList().GetSampleRate() : 44100;
  SVTimeRulerPaint(painter, QRect(area.left(), area.top(), area.width(), kRulerHeight), scale_, scrollColumn_, rate,
                   palette());
  const QRect lanes(area.left(), area.top() + kRulerHeight, area.width(), std::max(0, area.height() - kRulerHeight));
  if (Document() == nullptr || Channels() == 0 || lanes.height() <= 0) {
    painter.fillRect(lanes, kPastEnd);
    return;
  }
  const long long firstTile = FloorDiv(scrollColumn_, kTileWidth);
  const long long lastTile = FloorDiv(scrollColumn_ + area.width() - 1, kTileWidth);
  for (long long t = firstTile; t <= lastTile; ++t)
    painter.drawImage(ClampToInt(t * kTileWidth - scrollColumn_) + lanes.left(), lanes.top(), Tile(t, lanes.height()));
  PaintMarks(painter, lanes);
  // Keep a screen's worth of tiles on either side, for scrolling back and forth.
  const long long span = lastTile - firstTile + 1;
  if (tiles_.size() > 3 * span + 2) {
    for (auto it = tiles_.begin(); it != tiles_.end();)
      if (it.key() < firstTile - span || it.key() > lastTile + span) {
        TileSpare(std::move(*it));
        it = tiles_.erase(it);
      } else {
        ++it;
      }
  }
}

const QImage& SVWaveView::Tile(long long index, int height) {
  if (!(tileScale_ == scale_) || tileHeight_ != height || tileVerticalZoom_ != verticalZoom_) {
    TilesDrop();
    tileScale_ = scale_;
    tileHeight_ = height;
    tileVerticalZoom_ = verticalZoom_;
  }
  auto it = tiles_.find(index);
  if (it == tiles_.end()) {
    QImage image;
    while (!spareTiles_.empty() && image.isNull()) {
      if (spareTiles_.back().height() == height) image = std::move(spareTiles_.back());
      spareTiles_.pop_back();
    }
    if (image.isNull()) image = QImage(kTileWidth, height, QImage::Format_RGB32);
    TilePaint(image, index);
    it = tiles_.insert(index, std::move(image));
  }
  return *it;
}

void SVWaveView::TilePaint(QImage& image, long long index) {
  const LCutListAudio& list = Document()->CutList();
  const int channels = Channels();
  const int laneHeight = std::max(1, image.height() / channels);
  const long long firstColumn = index * kTileWidth;
  // Columns from here on show no audio.
  const long long endX = std::clamp<long long>(scale_.ColumnsFor(Length()) - firstColumn, 0, kTileWidth);
  image.fill(kPastEnd);
  QPainter painter(&image);
  painter.fillRect(0, 0, static_cast<int>(endX), image.height(), kBackground);
  for (int c = 0; c < channels; ++c) {
    const int top = c * laneHeight;
    painter.setPen(kCentre);
    if (endX > 0) painter.drawLine(0, top + laneHeight / 2, static_cast<int>(endX) - 1, top + laneHeight / 2);
    painter.setPen(kLaneEdge);
    painter.drawLine(0, top + laneHeight - 1, kTileWidth - 1, top + laneHeight - 1);
  }
  const double half = (laneHeight - 2) / 2.0 * verticalZoom_;
  // A row inside the lane and the image, however small the view.
  auto yOf = [&](int c, float v) {
    const long top = std::min(c * laneHeight, image.height() - 1);
    const long bottom = std::clamp<long>(c * laneHeight + laneHeight - 2, top, image.height() - 1);
    const double y = c * laneHeight + laneHeight / 2 - static_cast<double>(v) * half;
    return static_cast<int>(std::clamp(std::lround(y), top, bottom));
  };

  if (!scale_.IsPoints()) {
    painter.end();
    columns_.Peaks(list, scale_.FrameOfColumn(firstColumn), scale_.framesPerPixel, kTileWidth, peaks_);
    const QRgb wave = kWave.rgb();
    // Straight into the pixels: scanLine would check for sharing on every call.
    auto* pixels = reinterpret_cast<QRgb*>(image.bits());
    const qsizetype stride = image.bytesPerLine() / static_cast<qsizetype>(sizeof(QRgb));
    int top[kTileWidth];
    int bottom[kTileWidth];
    for (int c = 0; c < channels; ++c) {
      int low = INT_MAX;
      int high = INT_MIN;
      for (int x = 0; x < kTileWidth; ++x) {
        const SVWaveColumn& column = peaks_[static_cast<std::size_t>(c * kTileWidth + x)];
        top[x] = column.IsEmpty() ? INT_MAX : yOf(c, column.max);
        bottom[x] = column.IsEmpty() ? INT_MIN : yOf(c, column.min);
        low = std::min(low, top[x]);
        high = std::max(high, bottom[x]);
      }
      // Row by row, so the writes run along memory.
      for (int y = low; y <= high; ++y) {
        QRgb* row = pixels + y * stride;
        for (int x = 0; x < kTileWidth; ++x) row[x] = (y >= top[x] && y <= bottom[x]) ? wave : row[x];
      }
    }
    return;
  }

  // Zoomed in: the samples as points joined by lines, one frame before and after the tile.
  const long long ppf = scale_.pixelsPerFrame;
  const long long frameA = std::max(0LL, scale_.FrameOfColumn(firstColumn) - 1);
  const long long frameB = std::min(Length(), scale_.FrameOfColumn(firstColumn + kTileWidth) + 2);
  if (frameB <= frameA) return;
  columns_.Samples(list, frameA, frameB - frameA, samples_);
  painter.setRenderHint(QPainter::Antialiasing, true);
  QVector<QPointF> points;
  for (int c = 0; c < channels; ++c) {
    points.clear();
    for (long long f = frameA; f < frameB; ++f) {
      const double x = static_cast<double>(f * ppf + ppf / 2 - firstColumn);
      points.append(QPointF(x, yOf(c, samples_[static_cast<std::size_t>((f - frameA) * channels + c)])));
    }
    painter.setPen(QPen(kWave, 1.0));
    painter.drawPolyline(points);
    if (ppf >= 6) {
      painter.setBrush(kWave);
      for (const QPointF& p : points) painter.drawEllipse(p, 1.5, 1.5);
    }
  }
}

void SVWaveView::PaintMarks(QPainter& painter, const QRect& lanes) {
  const SVFile* file = Document();
  const int width = lanes.width();
  auto clampX = [width](int x) { return std::clamp(x, -2, width + 2); };
  painter.save();
  painter.setClipRect(lanes);
  const QFontMetrics metrics(painter.font());

  // Regions of the project: a band at the top with the name, edges down the lanes.
  if (window_ != nullptr) {
    for (const SVRegion& region : window_->Manager().Project().Regions()) {
      const int xa = XOf(region.start);
      const int xb = XOf(region.end);
      if (xb < 0 || xa > width) continue;
      painter.fillRect(QRect(clampX(xa), lanes.top(), clampX(xb) - clampX(xa) + 1, kRegionBand), kRegion);
      painter.setPen(kRegionEdge);
      painter.drawLine(xa, lanes.top(), xa, lanes.bottom());
      painter.drawLine(xb, lanes.top(), xb, lanes.bottom());
      painter.drawText(std::max(xa, 0) + 3, lanes.top() + metrics.ascent() + 1, QString::fromUtf8(region.name));
    }
  }

  // The selection, over the one channel being edited alone.
  const SVSelection& selection = file->Selection();
  const bool oneChannel = window_ != nullptr && window_->IsChannelEditing() && Channels() > 1;
  QRect band = lanes;
  if (oneChannel) {
    const QRect lane = LaneRect(std::clamp(window_->ChannelEditChannel(), 0, Channels() - 1));
    band = QRect(lanes.left(), lane.top() - kRulerHeight + lanes.top(), lanes.width(), lane.height());
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1.0));
    painter.drawRect(band.adjusted(0, 0, -1, -1));
  }
  if (!selection.IsEmpty()) {
    const int xa = clampX(XOf(selection.start));
    const int xb = clampX(XOf(selection.end));
    painter.fillRect(QRect(xa, band.top(), std::max(1, xb - xa), band.height()), kSelection);
  }

  // Bookmarks: a dashed line with the name under the region band.
  painter.setPen(QPen(kBookmark, 1.0, Qt::DashLine));
  for (const LSVBookmark& bookmark : file->Bookmarks()) {
    const int x = XOf(bookmark.position);
    if (x < -200 || x > width) continue;
    painter.drawLine(x, lanes.top(), x, lanes.bottom());
    painter.drawText(x + 3, lanes.top() + kRegionBand + metrics.ascent() + 1, QString::fromUtf8(bookmark.name));
  }

  const int cursor = XOf(file->Cursor());
  if (cursor >= 0 && cursor <= width) {
    painter.setPen(QPen(kCursor, 1.0));
    painter.drawLine(cursor, lanes.top(), cursor, lanes.bottom());
  }
  painter.restore();
}

// Mouse.

void SVWaveView::SelectTo(long long frame) {
  SVSelection& selection = Document()->Selection();
  selection.start = std::min(anchor_, frame);
  selection.end = std::max(anchor_, frame);
  selection.band = 0;
  viewport()->update();
  emit SelectionChanged();
}

void SVWaveView::mousePressEvent(QMouseEvent* event) {
  SVFile* file = Document();
  if (event->button() != Qt::LeftButton || file == nullptr) {
    QAbstractScrollArea::mousePressEvent(event);
    return;
  }
  const int x = static_cast<int>(event->position().x());
  const long long frame = std::clamp(FrameAt(x), 0LL, Length());
  pressed_ = true;
  dragging_ = false;
  pressX_ = x;
  const Qt::KeyboardModifiers modifiers = event->modifiers();
  const bool channelsFree = window_ != nullptr && !window_->HasChannelEditLists();
  if (modifiers & Qt::ShiftModifier) {
    // Extends from the end of the selection farther from the click.
    const SVSelection& selection = file->Selection();
    if (selection.IsEmpty())
      anchor_ = file->Cursor();
    else
      anchor_ = std::llabs(frame - selection.start) > std::llabs(frame - selection.end) ? selection.start
                                                                                         : selection.end;
    dragging_ = true;
    SelectTo(frame);
    return;
  }
  anchor_ = frame;
  if ((modifiers & Qt::AltModifier) && Channels() > 1) {
    // One channel alone: the selection stays and now applies to that channel.
    const int lane = LaneAt(static_cast<int>(event->position().y()));
    if (lane >= 0 && channelsFree) {
      file->ChannelEditModeSet(kSVChannelEditSingle);
      window_->ChannelEditSwitchSet(true, lane);
    }
    viewport()->update();
    emit SelectionChanged();
    return;
  }
  if (channelsFree && window_->ChannelEditSwitch()) window_->ChannelEditSwitchSet(false, 0);
  file->CursorSet(frame);
  file->Selection().start = file->Selection().end = frame;
  file->Selection().band = 0;
  viewport()->update();
  emit SelectionChanged();
}

void SVWaveView::mouseMoveEvent(QMouseEvent* event) {
  if (!pressed_ || Document() == nullptr || !(event->buttons() & Qt::LeftButton)) {
    QAbstractScrollArea::mouseMoveEvent(event);
    return;
  }
  const int x = static_cast<int>(event->position().x());
  if (!dragging_ && std::abs(x - pressX_) < kDragDistance) return;
  dragging_ = true;
  // Dragging past an edge scrolls by the distance beyond it.
  if (x < 0 || x >= LanesWidth()) {
    keep_ = Keep::kZoom;
    ScrollColumnSet(scrollColumn_ + (x < 0 ? x : x - LanesWidth() + 1));
  }
  SelectTo(std::clamp(FrameAt(std::clamp(x, 0, LanesWidth())), 0LL, Length()));
}

void SVWaveView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) {
    QAbstractScrollArea::mouseReleaseEvent(event);
    return;
  }
  pressed_ = false;
  dragging_ = false;
  event->accept();
}

void SVWaveView::mouseDoubleClickEvent(QMouseEvent* event) {
  SVFile* file = Document();
  if (event->button() != Qt::LeftButton || file == nullptr) {
    QAbstractScrollArea::mouseDoubleClickEvent(event);
    return;
  }
  pressed_ = false;
  file->Selection().start = 0;
  file->Selection().end = Length();
  file->Selection().band = 0;
  viewport()->update();
  emit SelectionChanged();
}

void SVWaveView::wheelEvent(QWheelEvent* event) {
  const QPoint angle = event->angleDelta();
  if ((event->modifiers() & Qt::ControlModifier) && (event->modifiers() & Qt::ShiftModifier)) {
    // Strg+Umschalt+wheel: the vertical zoom, by a factor of two per notch.
    VerticalZoomSet(verticalZoom_ * std::pow(2.0, angle.y() / 120.0));
    event->accept();
    return;
  }
  if (event->modifiers() & Qt::ControlModifier) {
    // Whole notches zoom by two around the mouse; a fine wheel adds up to them.
    wheelZoom_ += angle.y();
    const int x = static_cast<int>(event->position().x());
    keep_ = Keep::kZoom;
    while (std::abs(wheelZoom_) >= 120) {
      SVWaveScale scale = scale_;
      if (wheelZoom_ > 0) {
        if (scale.framesPerPixel > 1)
          scale.framesPerPixel /= 2;
        else
          scale.pixelsPerFrame = std::min(scale.pixelsPerFrame * 2, kSVWaveMaxPixelsPerFrame);
        wheelZoom_ -= 120;
      } else {
        if (scale.pixelsPerFrame > 1)
          scale.pixelsPerFrame /= 2;
        else
          scale.framesPerPixel = std::min(scale.framesPerPixel * 2, kSVWaveMaxFramesPerPixel);
        wheelZoom_ += 120;
      }
      ZoomAround(scale, x);
    }
    event->accept();
    return;
  }
  const int delta = angle.x() != 0 ? angle.x() : angle.y();
  if (delta == 0) {
    event->ignore();
    return;
  }
  // A notch scrolls an eighth of the view.
  keep_ = Keep::kZoom;
  ScrollColumnSet(scrollColumn_ - static_cast<long long>(delta) * LanesWidth() / (120 * 8));
  event->accept();
}
