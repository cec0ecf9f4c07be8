#pragma once
// LPRSourceToSink: the job of pumping a source into a sink to its end, in
// blocks, with progress under a title and a cancellation test between blocks.
#include <string>

#include "base/process_interface.h"
#include "engine/sound_sink.h"
#include "engine/sound_source.h"

class LPRSourceToSink {
public:
  // closeSink: the sink handle is closed when the job ends, so a file sink
  // finishes its file before Process returns; when the job holds the last
  // handle, a failure of the file's last writes makes the job fail.
  LPRSourceToSink(std::string title, LSoundSource source, LSoundSink sink, bool closeSink = false)
      : title_(std::move(title)), source_(std::move(source)), sink_(std::move(sink)), closeSink_(closeSink) {}

  const std::string& Title() const { return title_; }
  LSoundSource& Source() { return source_; }
  LSoundSink& Sink() { return sink_; }
  // Frames written by the last Process.
  long long FramesDone() const { return done_; }

private:
  friend LProcessResult Process(LProcessInterface& process, LPRSourceToSink& job);
  std::string title_;
  LSoundSource source_;
  LSoundSink sink_;
  bool closeSink_;
  long long done_ = 0;
};

// Frames moved per block by the pump.
constexpr long long kLPumpBlockFrames = 8192;

// Reads the source from its present position to its end (following a streaming
// source until it stops growing) and writes every frame to the sink. Answers
// success, cancelled (the sink keeps what it was given), or failed when the sink
// raised its error flag.
[[nodiscard]] LProcessResult Process(LProcessInterface& process, LPRSourceToSink& job);
