#include "cut_list_fixture.h"

#include <cstring>

float FrameName(int tag, long long frame, int channel) {
  if (tag == 0) return 0.0f;
  return static_cast<float>(tag * 100000LL + frame) + 0.25f * static_cast<float>(channel);
}

Model ModelOf(int tag, long long from, long long frames) {
  Model model;
  for (long long i = 0; i < frames; ++i) model.push_back({tag, from + i});
  return model;
}

Model ModelSilence(long long frames) { return Model(static_cast<std::size_t>(frames)); }

Model Concat(std::initializer_list<Model> parts) {
  Model all;
  for (const Model& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

std::vector<float> Render(const Model& model, int channels) {
  std::vector<float> samples;
  samples.reserve(model.size() * static_cast<std::size_t>(channels));
  for (const ModelFrame& frame : model) {
    for (int c = 0; c < channels; ++c) samples.push_back(FrameName(frame.tag, frame.frame, c));
  }
  return samples;
}

std::vector<float> ReadList(const LCutListAudio& list) {
  LSoundSource source = list.OpenSource();
  const long long frames = source.GetEndSample();
  return ReadBlocks(source, 0, frames, frames > 0 ? frames : 1);
}

long long RefCount(const LSoundCacheItemHandle& item) { return LSoundCache::Instance().RefCountGet(item.Number()); }

bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0);
}

LSoundCacheItemHandle CutListTest::TaggedItem(int tag, long long frames, int channels) {
  std::vector<float> samples(static_cast<std::size_t>(frames * channels));
  for (long long f = 0; f < frames; ++f) {
    for (int c = 0; c < channels; ++c) samples[static_cast<std::size_t>(f * channels + c)] = FrameName(tag, f, c);
  }
  return AddItem(LMakeSource<VectorSource>(std::move(samples), channels));
}

LCutListAudio CutListTest::ListOver(const LSoundCacheItemHandle& item, long long frames, int channels) {
  LCutListAudio list;
  list.SetFormat(44100, static_cast<std::uint8_t>(channels));
  list.SegmentAppend(LCutListSegment(item, frames, 1.0f, 0));
  return list;
}

long long CutListTest::SegmentsNaming(const std::vector<const LCutListAudio*>& lists, unsigned short item) {
  long long count = 0;
  for (const LCutListAudio* list : lists) {
    for (const LCutListSegment& segment : list->Segments()) count += segment.ItemNumber() == item ? 1 : 0;
  }
  return count;
}
