#pragma once
// What the edit-operation tests share: documents in windows, signals built in
// code (sines, a staircase over several cache items), the shape of a cut list to
// compare segment by segment, a document's state, and a tone's level.
#include <functional>
#include <tuple>
#include <utility>
#include <vector>

#include "app/ef_cut_list_process.h"
#include "app/file.h"
#include "app/file_gui.h"
#include "document_fixture.h"

class EditTest : public DocumentTest {
protected:
  // A new document over list in its own window.
  SVFileGUI* NewDocument(const LCutListAudio& list);
  // A staircase of frames whose audio lies in `pieces` cache items of equal length,
  // so ranges cross segment (and item) boundaries.
  [[nodiscard]] static LCutListAudio PiecewiseStaircase(long long frames, int channels, int pieces,
                                                        std::uint32_t rate = 44100);
  // Runs the effect over list and selection, expecting its label (unless null)
  // and success; answers the selection as the effect left it.
  template <class Effect, class... Args>
  static SVSelection Apply(LCutListAudio& list, SVSelection selection, const char* label, Args&&... args) {
    Effect effect(list, selection, std::forward<Args>(args)...);
    if (label) {
      EXPECT_STREQ(effect.GetEffectName(), label);
    }
    LProcessInterfaceQuiet process;
    EXPECT_EQ(effect.ProcessAndInsertCutList(process), 0) << process.Error();
    return selection;
  }
};

// Segment by segment: item number, length, gain, offset.
using SegmentShape = std::tuple<unsigned short, long long, float, long long>;
[[nodiscard]] std::vector<SegmentShape> ShapeOf(const LCutListAudio& list);

// What an undo or a roll-back must bring back exactly: shape, samples, rate,
// channels, selection start and end, cursor, bookmark positions, modified, changed.
using DocumentState = std::tuple<std::vector<SegmentShape>, std::vector<float>, std::uint32_t, int, long long,
                                 long long, long long, std::vector<long long>, bool, bool>;
[[nodiscard]] DocumentState StateOf(const SVFile& file);

struct Tone {
  double hz;
  double amplitude;
};
// A mono sum of sines.
[[nodiscard]] std::vector<float> Tones(const std::vector<Tone>& tones, long long frames, double rate);
// The amplitude of the sine at hz in mono samples [from, from + count); count
// should hold whole periods.
[[nodiscard]] double ToneAmplitude(const std::vector<float>& mono, long long from, long long count, double hz,
                                   double rate);
// Frames [from, to) of interleaved samples.
[[nodiscard]] std::vector<float> Frames(const std::vector<float>& samples, int channels, long long from, long long to);

// A cut-list process that runs a function on the piece.
class LambdaProcess final : public SVEfCutListProcess {
public:
  using Body = std::function<int(LProcessInterface&, LCutListAudio&)>;
  LambdaProcess(LCutListAudio& list, SVSelection& selection, Body body)
      : SVEfCutListProcess(list, selection), body_(std::move(body)) {}
  const char* GetEffectName() const override { return "Probe"; }
  int ProcessCutList(LProcessInterface& process, LCutListAudio& piece) override {
    ++calls;
    return body_(process, piece);
  }
  int calls = 0;

private:
  Body body_;
};
