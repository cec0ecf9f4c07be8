#include "engine/sound_cache_audio_info.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "base/file_stream.h"
#include "base/memory_stream.h"
#include "base/platform_file.h"
#include "base/sdf_format.h"
#include "base/sdf_writer.h"
#include "support/file_size_limit.h"
#include "support/temp_folder.h"

TEST(SoundCacheAudioInfo, RoundTripsInMemoryWithTheOriginalFileAndLastUse) {
  LSoundCacheAudioInfo info;
  info.sampleRate = 96000;
  info.channels = 6;
  info.hasOriginal = true;
  info.original.path = "/music/ä song.flac";
  info.original.modTime = 5000000000LL;  // past 2038
  info.original.hasModTime = true;
  info.original.size = 1ULL << 33;
  info.original.hasSize = true;
  info.original.attribute = 0100644;
  info.original.hasAttribute = true;
  info.original.modTimeNanoseconds = 999999999;
  info.original.hasModTimeNanoseconds = true;
  info.original.device = 0xFD01;
  info.original.inode = 1ULL << 40;
  info.original.hasIdentity = true;
  info.hasLastUse = true;
  info.lastUse = 1700000000;
  LMemoryStream stream;
  ASSERT_TRUE(LSoundCacheAudioInfoWrite(stream, info));
  ASSERT_TRUE(stream.Seek(0));
  LSoundCacheAudioInfo back;
  ASSERT_TRUE(LSoundCacheAudioInfoRead(stream, &back));
  EXPECT_EQ(back.sampleRate, 96000);
  EXPECT_EQ(back.channels, 6);
  EXPECT_TRUE(back.hasOriginal);
  EXPECT_EQ(back.original.path, info.original.path);
  EXPECT_EQ(back.original.modTime, info.original.modTime);
  EXPECT_EQ(back.original.size, info.original.size);
  EXPECT_EQ(back.original.attribute, info.original.attribute);
  EXPECT_EQ(back.original.modTimeNanoseconds, info.original.modTimeNanoseconds);
  EXPECT_TRUE(back.original.hasIdentity);
  EXPECT_EQ(back.original.device, info.original.device);
  EXPECT_EQ(back.original.inode, info.original.inode);
  EXPECT_TRUE(back.hasLastUse);
  EXPECT_EQ(back.lastUse, 1700000000);
  EXPECT_TRUE(back.unknown.empty());
  // A description cut anywhere before its trailer is not taken for a whole one.
  const std::vector<unsigned char> bytes = stream.Bytes();
  for (std::size_t cut = 0; cut + 4 < bytes.size(); ++cut) {
    LMemoryStream part(bytes.data(), cut);
    EXPECT_FALSE(LSoundCacheAudioInfoRead(part, &back)) << cut;
  }

  // The plain form: a header, chunks 16 and 17 (12 + 4 bytes each) in the root, the trailer.
  LSoundCacheAudioInfo plain;
  plain.sampleRate = 44100;
  plain.channels = 2;
  LMemoryStream small;
  ASSERT_TRUE(LSoundCacheAudioInfoWrite(small, plain));
  EXPECT_EQ(small.Bytes().size(), 12u + 12u + 2 * 16u + 4u);
  EXPECT_EQ(small.Bytes()[6], 43);
}

TEST(SoundCacheAudioInfo, ReadsOlderFormsAndRefusesOtherFiles) {
  LMemoryStream stream;
  LSDFWriter writer;
  ASSERT_TRUE(writer.Open(stream, kSDFFileTypeCacheItemInfo, kSDFDataVersionCacheItemInfo));
  writer.WriteInt(kLSoundCacheInfoSampleRate, 8000);
  writer.WriteInt(kLSoundCacheInfoChannels, 0x0301);  // only the low byte counts
  writer.StartContainer(kLSoundCacheInfoOriginal);
  writer.WriteInt64(kLSoundCacheInfoOriginalModTime, 111);
  writer.WriteInt(kLSoundCacheInfoOriginalModTime32, 222);  // read later: wins
  writer.EndContainer(kLSoundCacheInfoOriginal);
  writer.WriteInt(kLSoundCacheInfoLastUse32, 333);  // met first: used
  writer.WriteInt64(kLSoundCacheInfoLastUse, 444);
  writer.WriteBlob(500, reinterpret_cast<const unsigned char*>("analysis"), 8);
  ASSERT_TRUE(writer.IsOK());
  ASSERT_TRUE(writer.Close());
  ASSERT_TRUE(stream.Seek(0));
  LSoundCacheAudioInfo info;
  ASSERT_TRUE(LSoundCacheAudioInfoRead(stream, &info));
  EXPECT_EQ(info.channels, 1);
  EXPECT_EQ(info.original.modTime, 222);
  EXPECT_FALSE(info.original.hasSize);
  EXPECT_EQ(info.lastUse, 333);
  ASSERT_EQ(info.unknown.size(), 1u);
  EXPECT_EQ(info.unknown.front().id, 500);

  LMemoryStream other;
  LSDFWriter chain;
  ASSERT_TRUE(chain.Open(other, kSDFFileTypeEffectChain, kSDFDataVersionEffectChain));
  chain.WriteInt(kLSoundCacheInfoSampleRate, 8000);
  ASSERT_TRUE(chain.Close());
  ASSERT_TRUE(other.Seek(0));
  EXPECT_FALSE(LSoundCacheAudioInfoRead(other, &info));
  EXPECT_EQ(info.sampleRate, 0);
  LMemoryStream garbage(std::vector<unsigned char>(40, 0x55));
  EXPECT_FALSE(LSoundCacheAudioInfoRead(garbage, &info));
}

TEST(SoundCacheAudioInfo, AChangeKeepsChunksThisBuildDoesNotKnow) {
  TempFolder temp;
  std::string path = temp.File("5.audinfo");
  {
    LFileStream file(LFileOpen(path.c_str(), kLFileWrite | kLFileCreate));
    LSDFWriter writer;
    ASSERT_TRUE(writer.Open(file, kSDFFileTypeCacheItemInfo, kSDFDataVersionCacheItemInfo));
    writer.WriteInt(kLSoundCacheInfoSampleRate, 22050);
    writer.WriteInt(kLSoundCacheInfoChannels, 2);
    writer.StartContainer(kLSoundCacheInfoOriginal);
    writer.WriteString(kLSoundCacheInfoOriginalPath, "/a.wav");
    writer.WriteFloat(99, 1.5f);  // inside the original chunk
    writer.EndContainer(kLSoundCacheInfoOriginal);
    writer.WriteString(700, "loudness analysis");
    ASSERT_TRUE(writer.Close());
  }
  ASSERT_TRUE(LSoundCacheAudioInfoModify(path.c_str(), [](LSoundCacheAudioInfo& info) {
    info.hasLastUse = true;
    info.lastUse = 1234;
  }));
  LSoundCacheAudioInfo info;
  ASSERT_TRUE(LSoundCacheAudioInfoLoad(path.c_str(), &info));
  EXPECT_EQ(info.sampleRate, 22050);
  EXPECT_EQ(info.channels, 2);
  EXPECT_EQ(info.original.path, "/a.wav");
  EXPECT_EQ(info.lastUse, 1234);
  ASSERT_EQ(info.unknown.size(), 1u);
  EXPECT_EQ(info.unknown.front().id, 700);
  ASSERT_EQ(info.originalUnknown.size(), 1u);
  EXPECT_EQ(info.originalUnknown.front().id, 99);

  EXPECT_FALSE(LSoundCacheAudioInfoModify(temp.File("missing.audinfo").c_str(), [](LSoundCacheAudioInfo&) {}));
  EXPECT_FALSE(LSoundCacheAudioInfoLoad(temp.File("missing.audinfo").c_str(), &info));
}

TEST(SoundCacheAudioInfo, AModifyThatRunsOutOfRoomAnywhereLeavesTheOldDescriptionWhole) {
  TempFolder temp;
  const std::string path = temp.File("3.audinfo");
  ASSERT_TRUE(LSoundCacheAudioInfoCreate(path.c_str(), 44100, 2));
  const auto grow = [](LSoundCacheAudioInfo& info) {
    info.hasOriginal = true;
    info.original.path = std::string(300, 'x');
    info.hasLastUse = true;
    info.lastUse = 77;
  };
  LFileDetails created;
  ASSERT_TRUE(LFileDetailsGet(path.c_str(), &created));
  // The new description is longer than the old, so every limit below its size
  // fails the write of the temporary file.
  for (long long limit = 0; limit < 400; limit += 7) {
    SCOPED_TRACE(limit);
    const int status = RunWithFileSizeLimit(limit, [&] { return LSoundCacheAudioInfoModify(path.c_str(), grow) ? 0 : 1; });
    LSoundCacheAudioInfo info;
    ASSERT_TRUE(LSoundCacheAudioInfoLoad(path.c_str(), &info));
    EXPECT_EQ(info.channels, 2);
    if (status == 0) {
      EXPECT_EQ(info.lastUse, 77);
      break;
    }
    ASSERT_EQ(status, 1);
    EXPECT_NE(info.lastUse, 77);
    EXPECT_FALSE(LFileExists((path + kLSoundCacheInfoTempSuffix).c_str()));
    LFileDetails now;
    ASSERT_TRUE(LFileDetailsGet(path.c_str(), &now));
    EXPECT_EQ(now.size, created.size);
  }
}

TEST(SoundCacheAudioInfo, ModifiersRacingOnOneDescriptionLoseNoChange) {
  TempFolder temp;
  const std::string path = temp.File("4.audinfo");
  ASSERT_TRUE(LSoundCacheAudioInfoCreate(path.c_str(), 8000, 1));
  LSoundCacheAudioInfo created;
  ASSERT_TRUE(LSoundCacheAudioInfoLoad(path.c_str(), &created));
  constexpr int kThreads = 4;
  constexpr int kEach = 25;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kEach; ++i) {
        EXPECT_TRUE(LSoundCacheAudioInfoModify(path.c_str(), [](LSoundCacheAudioInfo& info) {
          info.hasLastUse = true;
          ++info.lastUse;
        }));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  LSoundCacheAudioInfo info;
  ASSERT_TRUE(LSoundCacheAudioInfoLoad(path.c_str(), &info));
  EXPECT_EQ(info.lastUse, created.lastUse + kThreads * kEach);
}
