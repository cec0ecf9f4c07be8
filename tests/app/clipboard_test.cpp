// Copy and Paste: the cyclic clipboard, the promised AIFF, and the order in
// which Paste looks at what the system clipboard holds.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "app/clipboard.h"
#include "app/core_utils.h"
#include "app/paste_source.h"
#include "app/cyclic_clipboard.h"
#include "app/text_to_speech.h"
#include "document_fixture.h"
#include "engine/sample_buffer_source.h"
#include "engine/source_to_sink.h"
#include "formats/aiff_file.h"

namespace {

using ClipboardTest = DocumentTest;

// A ramp of multiples of 1/scale: exact at 24 bits for 32768, at 16 bits for 32767 (the engine's integer scale).
std::vector<float> Ramp(long long frames, int channels, float scale = 32768.0f) {
  std::vector<float> out(static_cast<std::size_t>(frames * channels));
  for (long long f = 0; f < frames; ++f)
    for (int c = 0; c < channels; ++c)
      out[static_cast<std::size_t>(f * channels + c)] = static_cast<float>((f * 7 + c * 1000) % 30000 - 15000) / scale;
  return out;
}

int FilesIn(const std::string& folder) {
  int count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) ++count;
  return count;
}

TEST_F(ClipboardTest, TheEleventhCopyOverwritesTheFirstEntry) {
  SVCyclicClipboard& ring = SVCyclicClipboard::Instance();
  const LCutListAudio list = StaircaseList(100, 1);
  for (int i = 1; i <= 11; ++i) {
    LCutListAudio part;
    list.EfCopy(0, i, part);
    Dialog().Clipboard().Copy(part);
  }
  EXPECT_EQ(ring.Count(), 10);
  EXPECT_EQ(ring.LastIndex(), 0);
  EXPECT_EQ(ring.WriteIndex(), 1);
  EXPECT_EQ(ring.Entry(0).GetLength(), 11);
  EXPECT_EQ(ring.Entry(1).GetLength(), 2);
  EXPECT_EQ(ring.Entry(9).GetLength(), 10);
  EXPECT_EQ(ring.Last().GetLength(), 11);
}

TEST_F(ClipboardTest, PasteOfOurOwnCopyTakesTheLastListWithoutCopyingAudio) {
  const LCutListAudio list = StaircaseList(1000, 2);
  LCutListAudio part;
  list.EfCopy(100, 300, part);
  Dialog().Clipboard().Copy(part);
  EXPECT_TRUE(board_.HasType(kSVClipboardTypeInternal));
  EXPECT_TRUE(board_.HasType(kSVClipboardTypeAiff));
  EXPECT_EQ(board_.RenderCount(), 0) << "the AIFF is only promised";

  const LCutListAudio pasted = SVPasteSource::GetAudioFromClipboard(frontEnd_, board_);
  EXPECT_EQ(DocReadAll(pasted), DocReadAll(part));
  EXPECT_EQ(pasted.Segments().front().ItemNumber(), list.Segments().front().ItemNumber());
  EXPECT_EQ(CacheAudioFiles(), 1);
  EXPECT_EQ(board_.RenderCount(), 0);
}

TEST_F(ClipboardTest, ThePromisedAiffIsRenderedOnDemandAndReadsBack) {
  const std::vector<float> ramp = Ramp(5000, 2);
  Dialog().Clipboard().Copy(DocListOf(ramp, 2, 22050));
  const std::string path = board_.DataFileGet(kSVClipboardTypeAiff);
  ASSERT_FALSE(path.empty());
  EXPECT_EQ(board_.RenderCount(), 1);
  EXPECT_EQ(frontEnd_.processTitles.back(), "Audio wird Systemzwischenablage kopiert");
  EXPECT_EQ(board_.DataFileGet(kSVClipboardTypeAiff), path) << "rendered once";
  EXPECT_EQ(board_.RenderCount(), 1);

  LSoundSource source = LAiffFile::OpenSource(path.c_str());
  ASSERT_FALSE(source.IsError());
  EXPECT_EQ(source.GetSampleRate(), 22050u);
  EXPECT_EQ(source.GetChannels(), 2);
  EXPECT_EQ(DocReadAll(source), ramp);

  // sox, where installed, judges the file too.
  if (std::system("command -v soxi >/dev/null 2>&1") == 0) {
    auto soxi = [&](const char* option) {
      const std::string out = temp_.File("soxi.txt");
      EXPECT_EQ(std::system(("soxi " + std::string(option) + " '" + path + "' > '" + out + "'").c_str()), 0);
      long value = -1;
      if (std::FILE* f = std::fopen(out.c_str(), "r")) {
        EXPECT_EQ(std::fscanf(f, "%ld", &value), 1);
        std::fclose(f);
      }
      return value;
    };
    EXPECT_EQ(soxi("-r"), 22050);
    EXPECT_EQ(soxi("-c"), 2);
    EXPECT_EQ(soxi("-s"), 5000);
    EXPECT_EQ(soxi("-b"), 24);
  }

  // A new copy takes the old file with it.
  Dialog().Clipboard().Copy(StaircaseList(10, 1));
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(ClipboardTest, PasteReadsAiffThatAnotherProgramCopied) {
  const std::vector<float> ramp = Ramp(3000, 1, 32767.0f);
  const std::string path = temp_.File("fremd.aif");
  {
    LAiffFileFormat format;
    format.sampleRate = 8000;
    format.channels = 1;
    format.bitsPerSample = 16;
    LPRSourceToSink job("", LMakeSource<LSRCSampleBuffer>(ramp, 8000, 1), LAiffFile::OpenSink(path.c_str(), format),
                        true);
    LProcessInterfaceQuiet process;
    ASSERT_EQ(Process(process, job), kLProcessSuccess);
  }
  board_.DeclareTypes({kSVClipboardTypeAiff}, nullptr);
  ASSERT_TRUE(board_.DataFileSet(kSVClipboardTypeAiff, path.c_str()));
  const LCutListAudio pasted = SVPasteSource::GetAudioFromClipboard(frontEnd_, board_);
  EXPECT_EQ(frontEnd_.processTitles.back(), "Audio wird eingefügt...");
  EXPECT_EQ(pasted.GetSampleRate(), 8000u);
  EXPECT_EQ(DocReadAll(pasted), ramp);
}

TEST_F(ClipboardTest, PasteOfTextSpeaksIt) {
  if (SVTextToSpeechProgram().empty()) GTEST_SKIP() << "espeak-ng is not installed";
  board_.TextPut("Hallo Welt");
  const LCutListAudio pasted = SVPasteSource::GetAudioFromClipboard(frontEnd_, board_);
  EXPECT_TRUE(frontEnd_.alerts.empty());
  EXPECT_EQ(frontEnd_.processTitles.back(), "Laden der Ursprungsaudiodatei");
  EXPECT_GT(pasted.GetLength(), pasted.GetSampleRate() / 4) << "speech of a quarter second or more";
  EXPECT_EQ(pasted.GetChannels(), 1);
  double energy = 0;
  for (float s : DocReadAll(pasted)) energy += double(s) * s;
  EXPECT_GT(energy, 1.0) << "the speech is not silent";
  EXPECT_EQ(FilesIn(tempFiles_), 0) << "the speech file is deleted after loading";
}

TEST_F(ClipboardTest, PasteOfTextWithoutASpeechEngineSaysSoAndPasteOfAnythingElseGivesNothing) {
  EXPECT_TRUE(SVPasteSource::GetAudioFromClipboard(frontEnd_, board_).IsEmpty());
  board_.DeclareTypes({"public.png"}, nullptr);
  EXPECT_TRUE(SVPasteSource::GetAudioFromClipboard(frontEnd_, board_).IsEmpty());
  EXPECT_TRUE(frontEnd_.alerts.empty());

  SVTextToSpeechProgramSet(temp_.File("kein-espeak-ng").c_str());
  board_.TextPut("Hallo");
  EXPECT_TRUE(SVPasteSource::GetAudioFromClipboard(frontEnd_, board_).IsEmpty());
  ASSERT_EQ(frontEnd_.alerts.size(), 1u);
  EXPECT_EQ(frontEnd_.alerts[0].second, kSVSpeechMissingText);
  EXPECT_EQ(FilesIn(tempFiles_), 0);
}

}  // namespace
