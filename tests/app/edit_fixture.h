#pragma once
// What the edit-operation tests share: documents in windows, signals built in
// code (sines, a staircase over several cache items), the shape of a cut list to
// compare segment by segment, a tone's level, and progress interfaces that stop
// a job at a chosen point.
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "app/ef_cut_list_process.h"
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
};

// Segment by segment: item number, length, gain, offset.
using SegmentShape = std::tuple<unsigned short, long long, float, long long>;
[[nodiscard]] std::vector<SegmentShape> ShapeOf(const LCutListAudio& list);

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

// Cancels as soon as a job with this title starts, or after `checks` further checks.
class CancelDuringJob : public LProcessInterfaceQuiet {
public:
  explicit CancelDuringJob(std::string title, long checks = 0) : title_(std::move(title)), checks_(checks) {}
  void SetStatus(const char* text, int line) override;
  bool IsCancelled() override;
  [[nodiscard]] bool Reached() const { return reached_; }

private:
  std::string title_;
  long checks_;
  bool reached_ = false;
};

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
