#include "gui/wave_view.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include "app/file.h"
#include "app/file_gui.h"
#include "app/front_end.h"
#include "app/window_manager.h"
#include "engine/cut_list_segment.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_item.h"
#include "support/temp_folder.h"
#include "support/vector_source.h"

namespace {

constexpr long long kThreeHours = 3LL * 3600 * 44100;

// A document of silence: the view needs no cache for it.
LCutListAudio SilenceList(long long frames, int channels) {
  LCutListAudio list;
  list.SetFormat(44100, static_cast<std::uint8_t>(channels));
  if (frames > 0) list.SegmentAppend(LCutListSegment::Silence(frames));
  return list;
}

class WaveViewTest : public ::testing::Test {
protected:
  void Open(const LCutListAudio& list) {
    view_.WindowSet(nullptr);
    window_ = std::make_unique<SVFileGUI>(manager_, std::make_shared<SVFile>(list));
    view_.resize(1000, 300);
    view_.show();
    view_.WindowSet(window_.get());
  }
  SVFile& File() { return *window_->File(); }
  // What a repaint draws, into an image.
  void Paint() {
    QImage image(view_.viewport()->size(), QImage::Format_RGB32);
    QPainter painter(&image);
    view_.Render(painter, image.rect());
  }
  QWidget* Lanes() { return view_.viewport(); }
  // A point in the lane of channel.
  QPoint At(int x, int channel = 0) { return {x, view_.LaneRect(channel).center().y()}; }

  SVFrontEndQuiet frontEnd_;
  SVWindowManager manager_{frontEnd_};
  std::unique_ptr<SVFileGUI> window_;
  SVWaveView view_;
};

TEST_F(WaveViewTest, WithoutADocumentOrAudioItPaintsAndAnyChannelCountGetsStackedLanes) {
  view_.resize(400, 200);
  view_.show();
  view_.viewport()->repaint();
  for (int channels = 1; channels <= 8; ++channels) {
    Open(SilenceList(channels == 1 ? 0 : 44100, channels));
    Paint();
    EXPECT_EQ(view_.horizontalScrollBar()->maximum(), 0) << "the whole document fits";
    for (int c = 0; c < channels; ++c) {
      EXPECT_GE(view_.LaneRect(c).height(), 1);
      if (c > 0) {
        EXPECT_EQ(view_.LaneRect(c).top(), view_.LaneRect(c - 1).bottom() + 1);
      }
    }
    EXPECT_LE(view_.LaneRect(channels - 1).bottom(), view_.viewport()->height());
  }
  // Eight lanes in a view lower than eight pixels still paint inside it.
  view_.resize(200, 24 + 5 + view_.height() - view_.viewport()->height());
  Paint();
}

TEST_F(WaveViewTest, TheMouseSetsCursorAndSelectionAndAltPicksOneChannel) {
  Open(SilenceList(100000, 2));
  view_.ZoomSet(100);
  QSignalSpy changed(&view_, &SVWaveView::SelectionChanged);

  // A click sets the cursor and clears the selection.
  File().Selection() = {500, 900};
  QTest::mouseClick(Lanes(), Qt::LeftButton, Qt::NoModifier, At(30));
  EXPECT_EQ(File().Cursor(), 3000);
  EXPECT_TRUE(File().Selection().IsEmpty());

  // A drag selects from where it started; the cursor stays there.
  QTest::mousePress(Lanes(), Qt::LeftButton, Qt::NoModifier, At(50));
  QTest::mouseMove(Lanes(), At(70));
  QTest::mouseMove(Lanes(), At(20));
  QTest::mouseRelease(Lanes(), Qt::LeftButton, Qt::NoModifier, At(20));
  EXPECT_EQ(File().Selection().start, 2000);
  EXPECT_EQ(File().Selection().end, 5000);
  EXPECT_EQ(File().Cursor(), 5000);

  // Umschalt+click moves the nearer end.
  QTest::mouseClick(Lanes(), Qt::LeftButton, Qt::ShiftModifier, At(90));
  EXPECT_EQ(File().Selection().start, 2000);
  EXPECT_EQ(File().Selection().end, 9000);
  QTest::mouseClick(Lanes(), Qt::LeftButton, Qt::ShiftModifier, At(10));
  EXPECT_EQ(File().Selection().start, 1000);
  EXPECT_EQ(File().Selection().end, 9000);

  // Alt+click in the second lane keeps the range for that channel alone.
  QTest::mouseClick(Lanes(), Qt::LeftButton, Qt::AltModifier, At(60, 1));
  EXPECT_EQ(File().ChannelEditMode(), kSVChannelEditSingle);
  EXPECT_TRUE(window_->IsChannelEditing());
  EXPECT_EQ(window_->ChannelEditChannel(), 1);
  EXPECT_EQ(File().Selection().end - File().Selection().start, 8000);

  // A double-click selects everything; a plain click leaves the one channel.
  QTest::mouseDClick(Lanes(), Qt::LeftButton, Qt::NoModifier, At(40));
  EXPECT_EQ(File().Selection().start, 0);
  EXPECT_EQ(File().Selection().end, 100000);
  QTest::mouseClick(Lanes(), Qt::LeftButton, Qt::NoModifier, At(40));
  EXPECT_FALSE(window_->IsChannelEditing());
  EXPECT_GE(changed.count(), 7);

  // A click past the end puts the cursor at the end.
  view_.ZoomSet(1000);
  QTest::mouseClick(Lanes(), Qt::LeftButton, Qt::NoModifier, At(900));
  EXPECT_EQ(File().Cursor(), 100000);
}

TEST_F(WaveViewTest, HoursAtDeepZoomKeepEveryFrameInPlaceAndTheScrollBarReachesTheEnd) {
  Open(SilenceList(kThreeHours, 2));
  const int width = view_.viewport()->width();

  // One frame per pixel: more columns than a scroll bar counts.
  view_.ZoomSet(1);
  QScrollBar* bar = view_.horizontalScrollBar();
  bar->setValue(bar->maximum());
  EXPECT_EQ(view_.FrameAt(width), kThreeHours);
  EXPECT_EQ(File().View().first, kThreeHours - width);

  // 64 pixels per frame, far in: a frame's pixels all map back to it.
  view_.ZoomSet(1.0 / 64);
  const long long far = kThreeHours - 12345;
  view_.ScrollToFrame(far - 3);
  const int x = view_.XOf(far);
  EXPECT_EQ(x, 3 * 64);
  EXPECT_EQ(view_.FrameAt(x), far);
  EXPECT_EQ(view_.FrameAt(x + 63), far);
  EXPECT_EQ(view_.FrameAt(x + 64), far + 1);

  // Strg+wheel zooms in around the mouse: the frame under it stays.
  view_.ZoomSet(1000);
  view_.ScrollToFrame(kThreeHours / 2);
  const long long under = view_.FrameAt(300);
  QWheelEvent wheel(QPointF(300, 100), view_.viewport()->mapToGlobal(QPointF(300, 100)), QPoint(), QPoint(0, 120),
                    Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(view_.viewport(), &wheel);
  EXPECT_EQ(view_.Zoom(), 500.0);
  EXPECT_EQ(view_.FrameAt(300), under);

  File().Selection() = {1000, 1000 + 10 * width};
  view_.ZoomToSelection();
  EXPECT_EQ(view_.Zoom(), 10.0);
  EXPECT_EQ(view_.FirstFrame(), 1000);
  view_.ZoomToFit();
  EXPECT_EQ(view_.FirstFrame(), 0);
  EXPECT_GE(view_.FrameAt(width), kThreeHours);

  // A view state put back from outside (undo, a project) is shown.
  File().View() = {kThreeHours / 2, kThreeHours / 2 + 10 * width};
  view_.DocumentChanged();
  EXPECT_EQ(view_.FirstFrame(), kThreeHours / 2);
  EXPECT_EQ(view_.Zoom(), 10.0);
}

TEST_F(WaveViewTest, TilesStayWhileOnlyTheSelectionChangesAndGoWithTheAudio) {
  TempFolder temp;
  LSoundCache::Instance().FolderSet(temp.File("cache").c_str());
  {
    std::vector<float> samples;
    for (int f = 0; f < 200000; ++f) samples.push_back(static_cast<float>((f % 1000) - 500) / 600.0f);
    LProcessInterfaceQuiet process;
    LSoundCacheItemHandle item;
    long long length = 0;
    ASSERT_EQ(LSoundCacheItemAdd(process, LMakeSource<VectorSource>(std::move(samples), 1), item, length),
              kLProcessSuccess);
    LCutListAudio list;
    list.SetSingleCutListSegment(LCutListSegment(std::move(item), length, 1.0f, 0), 44100, 1);
    Open(list);
  }
  for (double zoom : {1.0 / 8, 1.0, 100.0, 1000.0, 10000.0}) {
    view_.ZoomSet(zoom);
    Paint();
    EXPECT_GT(view_.TileCount(), 0);
  }
  File().Selection() = {10, 20};
  view_.DocumentChanged();
  EXPECT_GT(view_.TileCount(), 0) << "the audio is the same";
  File().CutList().EfDelete(0, 100);
  view_.DocumentChanged();
  EXPECT_EQ(view_.TileCount(), 0) << "the audio changed";
  view_.WindowSet(nullptr);
  window_.reset();
  EXPECT_EQ(LSoundCache::Instance().CountedItemCount(), 0);
  LSoundCache::Instance().FolderSet("");
}

}  // namespace
