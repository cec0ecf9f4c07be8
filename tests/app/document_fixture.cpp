#include "document_fixture.h"

#include <cstdlib>
#include <dirent.h>
#include <filesystem>

#include "app/cyclic_clipboard.h"
#include "app/text_to_speech.h"
#include "base/disk_space.h"
#include "base/user_settings.h"
#include "engine/cut_list_segment.h"
#include "engine/sample_buffer_source.h"
#include "engine/sound_cache.h"
#include "engine/sound_cache_item.h"
#include "engine/source_to_sink.h"
#include "formats/wave_file.h"

LProcessResult RecordingFrontEnd::RunProcess(const char* title, const SVProcessJob& job) {
  processTitles.emplace_back(title);
  LProcessInterfaceQuiet process;
  if (cancelAfterChecks >= 0) process.CancelAfterChecks(cancelAfterChecks);
  LProcessResult result = job(process);
  lastError = process.Error();
  if (result == kLProcessFailed && !lastError.empty()) LastErrorSet(lastError);
  if (afterJob) afterJob();
  return result;
}

void DocumentTest::SetUp() {
  ASSERT_FALSE(temp_.Path().empty());
  cacheFolder_ = temp_.File("cache");
  tempFiles_ = temp_.File("tmp");
  std::filesystem::create_directories(tempFiles_);
  const char* tmp = std::getenv("TMPDIR");
  hadTmpDir_ = tmp != nullptr;
  if (tmp) savedTmpDir_ = tmp;
  ::setenv("TMPDIR", tempFiles_.c_str(), 1);
  LUserSettings::Instance().FolderSet(temp_.File("settings"));
  LSoundCache::Instance().FolderSet(cacheFolder_.c_str());
  descriptors_ = OpenDescriptorCount();
  dialog_ = std::make_unique<MainDialog>(frontEnd_, board_);
}

void DocumentTest::TearDown() {
  dialog_.reset();
  SVCyclicClipboard::Instance().Clear();
  board_.DeclareTypes({}, nullptr);
  EXPECT_EQ(LSoundCache::Instance().CountedItemCount(), 0) << "an item is still counted";
  EXPECT_EQ(OpenDescriptorCount(), descriptors_) << "a descriptor was left open";
  SVTextToSpeechProgramSet("");
  LDiskFreeBytesOverride(nullptr);
  LSoundCache::Instance().FolderSet("");
  LUserSettings::Instance().FolderSet("");
  if (hadTmpDir_)
    ::setenv("TMPDIR", savedTmpDir_.c_str(), 1);
  else
    ::unsetenv("TMPDIR");
}

LCutListAudio DocumentTest::StaircaseList(long long frames, int channels, std::uint32_t rate) {
  return DocListOf(DocStaircase(frames, channels), channels, rate);
}

std::string DocumentTest::WriteStaircaseWave(const std::string& name, long long frames, int channels) {
  std::vector<float> samples = DocStaircase(frames, channels);
  for (float& s : samples) s /= 65536.0f;
  const std::string path = temp_.File(name);
  LPRSourceToSink job("", LMakeSource<LSRCSampleBuffer>(std::move(samples), 44100, static_cast<std::uint8_t>(channels)),
                      LWaveFile::OpenSinkFloatExport(path.c_str(), 44100, static_cast<unsigned char>(channels)), true);
  LProcessInterfaceQuiet process;
  EXPECT_EQ(Process(process, job), kLProcessSuccess);
  return path;
}

int DocumentTest::CacheAudioFiles() const {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(cacheFolder_)) {
    if (entry.path().extension() == ".aud") ++count;
  }
  return count;
}

float DocStaircaseValue(long long frame, int channel) { return static_cast<float>(frame) + 0.25f * channel; }

std::vector<float> DocStaircase(long long frames, int channels) {
  std::vector<float> samples(static_cast<std::size_t>(frames * channels));
  for (long long f = 0; f < frames; ++f)
    for (int c = 0; c < channels; ++c) samples[static_cast<std::size_t>(f * channels + c)] = DocStaircaseValue(f, c);
  return samples;
}

LCutListAudio DocListOf(std::vector<float> samples, int channels, std::uint32_t rate) {
  LProcessInterfaceQuiet process;
  LSoundCacheItemHandle item;
  long long length = 0;
  LCutListAudio list;
  EXPECT_EQ(LSoundCacheItemAdd(process, LMakeSource<LSRCSampleBuffer>(std::move(samples), rate, static_cast<std::uint8_t>(channels)), item, length),
            kLProcessSuccess)
      << process.Error();
  list.SetSingleCutListSegment(LCutListSegment(std::move(item), length, 1.0f, 0), static_cast<int>(rate),
                               static_cast<unsigned char>(channels));
  return list;
}

std::vector<float> DocReadAll(LSoundSource source) {
  const long long frames = source.GetEndSample();
  const int channels = source.GetChannels();
  std::vector<float> whole(static_cast<std::size_t>(frames * channels));
  source.Seek(0);
  source.Read(whole.data(), frames);
  std::vector<float> pieces(whole.size());
  source.Seek(0);
  for (long long at = 0; at < frames; at += 234)
    source.Read(pieces.data() + at * channels, std::min<long long>(234, frames - at));
  EXPECT_EQ(whole, pieces) << "reading in blocks of 234 frames differs";
  return whole;
}

std::vector<float> DocReadAll(const LCutListAudio& list) { return DocReadAll(list.OpenSource()); }

std::vector<float> DocChannel(const std::vector<float>& samples, int channels, int channel) {
  std::vector<float> out;
  for (std::size_t i = static_cast<std::size_t>(channel); i < samples.size(); i += static_cast<std::size_t>(channels))
    out.push_back(samples[i]);
  return out;
}
