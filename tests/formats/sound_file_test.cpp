#include "formats/sound_file.h"

#include <gtest/gtest.h>

#include <cmath>

#include "codec_fixtures.h"
#include "base/platform_file.h"
#include "formats/aiff_file.h"
#include "formats/wave_file.h"
#include "support/temp_folder.h"
#include "wave_fixtures.h"

namespace {

LSoundFileFormat Format(LSoundFileKind kind, LSoundFileLayout layout = LSoundFileLayout::kPcm16) {
  LSoundFileFormat f;
  f.kind = kind;
  f.layout = layout;
  return f;
}

LProcessResult SaveQuietly(LSoundSource source, const std::string& path, const LSoundFileFormat& format,
                           std::string* error = nullptr) {
  LProcessInterfaceQuiet quiet;
  const LProcessResult r = LSoundFile::Save(quiet, std::move(source), path.c_str(), format);
  if (error) *error = quiet.Error();
  return r;
}

}  // namespace

TEST(SoundFile, NamesExtensionsAndLayoutsMapToFormats) {
  LSoundFileKind kind;
  ASSERT_TRUE(LSoundFileKindFromName("FLAC", &kind));
  EXPECT_EQ(kind, LSoundFileKind::kFlac);
  ASSERT_TRUE(LSoundFileKindForPath("/a/b.c/Lied.AIF", &kind));
  EXPECT_EQ(kind, LSoundFileKind::kAiff);
  ASSERT_TRUE(LSoundFileKindForPath("x.oga", &kind));
  EXPECT_EQ(kind, LSoundFileKind::kOgg);
  EXPECT_FALSE(LSoundFileKindForPath("/a/b.mp3/noext", &kind));
  EXPECT_FALSE(LSoundFileKindForPath("x.docx", &kind));
  EXPECT_STREQ(LSoundFileKindName(LSoundFileKind::kOpus), "opus");
  LSoundFileLayout layout;
  ASSERT_TRUE(LSoundFileLayoutFromName("ulaw", &layout));
  EXPECT_EQ(layout, LSoundFileLayout::kULaw);
  EXPECT_FALSE(LSoundFileLayoutFromName("pcm12", &layout));
  EXPECT_STREQ(LSoundFileLayoutName(LSoundFileLayout::kPcm24), "pcm24");
}

TEST(SoundFile, ContentComesBeforeTheExtension) {
  TempFolder folder;
  // A WAVE file under a foreign name, and AIFF bytes under a WAVE name.
  const std::string wave = folder.File("klang.dat");
  WriteFileBytes(wave, WaveFile(1, 2, 8000, 16, Staircase16(100, 2)));
  LSoundFileInfo info;
  LSoundSource s = LSoundFile::OpenSource(wave.c_str(), &info);
  ASSERT_FALSE(s.IsError());
  EXPECT_EQ(s.GetEndSample(), 100);
  EXPECT_EQ(info.formatName, "wav");
  EXPECT_EQ(info.codecName, "pcm_s16le");

  const std::string aiff = folder.File("falsch.wav");
  ASSERT_EQ(SaveQuietly(MemorySource(SineFrames(500, 1, 8000, 100.0), 1, 8000), aiff, Format(LSoundFileKind::kAiff)),
            kLProcessSuccess);
  s = LSoundFile::OpenSource(aiff.c_str(), &info);
  ASSERT_FALSE(s.IsError());
  EXPECT_EQ(info.formatName, "aiff");
  EXPECT_EQ(s.GetEndSample(), 500);

  // A WAVE file that starts with a chunk of another kind is found whatever its name.
  Bytes leading = Chunk("JUNK", Bytes(12, 0));
  const Bytes body = WaveFile(1, 1, 8000, 16, Staircase16(50, 1));
  leading.insert(leading.end(), body.begin(), body.end());
  for (const char* name : {"vorne.wav", "vorne.dat"}) {
    const std::string junk = folder.File(name);
    WriteFileBytes(junk, leading);
    s = LSoundFile::OpenSource(junk.c_str(), &info);
    ASSERT_FALSE(s.IsError()) << name << " " << int(s.GetErrorCode());
    EXPECT_EQ(s.GetEndSample(), 50) << name;
    EXPECT_EQ(info.formatName, "wav") << name;
  }

  // In memory as on disk.
  const Bytes bytes = FileBytes(wave);
  LSoundSource m = LSoundFile::OpenSource(bytes.data(), bytes.size(), "x.wav");
  ASSERT_FALSE(m.IsError());
  EXPECT_EQ(ReadWhole(m), ReadWhole(s = LSoundFile::OpenSource(wave.c_str())));
}

TEST(SoundFile, FailuresAnswerTheirCodesAndGermanMessages) {
  TempFolder folder;
  const std::string missing = folder.File("fehlt.mp3");
  LSoundFileInfo info;
  LSoundSource s = LSoundFile::OpenSource(missing.c_str(), &info);
  EXPECT_EQ(s.GetErrorCode(), kLSourceCannotOpen);
  EXPECT_NE(LSoundFile::OpenErrorMessage(s, missing.c_str(), info).find("kann nicht geöffnet werden"),
            std::string::npos);

  const std::string garbage = folder.File("müll.xyz");
  WriteFileBytes(garbage, Bytes(3000, 0x5A));
  s = LSoundFile::OpenSource(garbage.c_str(), &info);
  EXPECT_EQ(s.GetErrorCode(), kLSourceUnsupported);
  EXPECT_EQ(LSoundFile::OpenErrorMessage(s, "müll.xyz", info),
            "Das Format der Datei \"müll.xyz\" wird nicht unterstützt.");

  // Damaged WAVE files get our reader's answer, not another reader's reading by other rules.
  const Bytes fmt = Chunk("fmt ", FmtBody(kLWaveTagPCM, 1, 8000, 16));
  const Bytes data = Chunk("data", Staircase16(400, 1));
  Bytes oddFmt = FmtBody(kLWaveTagPCM, 1, 8000, 16);
  oddFmt.push_back(0);
  for (const Bytes& damaged : {RiffWave({Chunk("fmt ", oddFmt), data}), RiffWave({data, fmt}),
                               RiffWave({Chunk("fmt ", FmtBody(kLWaveTagPCM, 1, 196001, 16)), data})}) {
    const std::string path = folder.File("kaputt.wav");
    WriteFileBytes(path, damaged);
    s = LSoundFile::OpenSource(path.c_str(), &info);
    EXPECT_EQ(LSoundFile::OpenErrorMessage(s, "kaputt.wav", info),
              "Die Datei \"kaputt.wav\" kann nicht geöffnet werden, da sie beschädigt ist.");
  }

  const std::string raw = folder.File("roh.pcm");
  WriteFileBytes(raw, Staircase16(64, 1));
  LRawSettings settings;
  settings.sampleRate = 16000;
  settings.formatCode = kLRaw16;
  s = LSoundFile::OpenSource(raw.c_str(), settings, &info);
  ASSERT_FALSE(s.IsError());
  EXPECT_EQ(s.GetEndSample(), 64);
  EXPECT_EQ(s.GetSampleRate(), 16000u);
}

TEST(SoundFile, AFmtChunkOfAbsurdFieldsIsRefusedWithABitRateThatDidNotOverflow) {
  // Rate, channels and bits near their widest: their product needs all 64 bits.
  for (std::uint16_t bits : {std::uint16_t{0xDADA}, std::uint16_t{0xFFFF}}) {
    const Bytes bytes = RiffWave({Chunk("fmt ", FmtBody(kLWaveTagPCM, 0xDADA, 0xDADADADAu, bits, 4)),
                                  Chunk("data", Staircase16(40, 1))});
    LSoundFileInfo info;
    LSoundSource s = LSoundFile::OpenSource(bytes.data(), bytes.size(), "x.wav", &info);
    EXPECT_TRUE(s.IsError());
    EXPECT_GE(info.bitRate, 0) << bits;
  }
}

TEST(SoundFile, SavedFilesHoldWhatTheFormatTakesAndReadBack) {
  TempFolder folder;
  const unsigned rate = 44100;
  const long long frames = rate;  // one second
  const std::vector<float> sine = SineFrames(frames, 2, rate, 441.0, 0.5);
  struct Case {
    const char* file;
    LSoundFileKind kind;
    LSoundFileLayout layout;
    unsigned wantRate;
    int wantChannels;
    bool exact;  // lossless: the frames come back within the format's step
  };
  const Case cases[] = {
      {"a.wav", LSoundFileKind::kWave, LSoundFileLayout::kPcm24, 44100, 2, true},
      {"g.wav", LSoundFileKind::kWave, LSoundFileLayout::kGsm, 8000, 1, false},
      {"r.wav", LSoundFileKind::kRF64, LSoundFileLayout::kFloat, 44100, 2, true},
      {"a.aiff", LSoundFileKind::kAiff, LSoundFileLayout::kPcm16, 44100, 2, true},
      {"a.flac", LSoundFileKind::kFlac, LSoundFileLayout::kPcm24, 44100, 2, true},
      {"a.mp3", LSoundFileKind::kMP3, LSoundFileLayout::kPcm16, 44100, 2, false},
      {"a.ogg", LSoundFileKind::kOgg, LSoundFileLayout::kPcm16, 44100, 2, false},
      {"a.opus", LSoundFileKind::kOpus, LSoundFileLayout::kPcm16, 48000, 2, false},
  };
  // The names say nothing, so only the content tells which writer made the file.
  for (const Case& c : cases) {
    LSoundFileFormat format = Format(c.kind, c.layout);
    if (LSoundFile::MissingCodec(format)) continue;
    format.tags.Set("TITLE", "Sinus");
    const std::string path = folder.File(std::string(c.file) + ".bin");
    std::string error;
    ASSERT_EQ(SaveQuietly(MemorySource(sine, 2, rate), path, format, &error), kLProcessSuccess) << c.file << error;
    LSoundFileInfo info;
    LSoundSource back = LSoundFile::OpenSource(path.c_str(), &info);
    ASSERT_FALSE(back.IsError()) << c.file;
    EXPECT_EQ(back.GetSampleRate(), c.wantRate) << c.file;
    EXPECT_EQ(back.GetChannels(), c.wantChannels) << c.file;
    const long long want = frames * c.wantRate / rate;
    // GSM stores whole blocks of 320 frames.
    const long long slack = c.layout == LSoundFileLayout::kGsm ? 320 : 0;
    EXPECT_LE(std::llabs(back.GetEndSample() - want), slack) << c.file;
    ASSERT_NE(info.tags.Get("TITLE"), nullptr) << c.file;
    EXPECT_STREQ(info.tags.Get("TITLE"), "Sinus") << c.file;
    LSoundFileFormat written;
    ASSERT_TRUE(LSoundFileFormatOf(info, &written)) << c.file;
    if (c.kind == LSoundFileKind::kRF64) {
      const Bytes head = FileBytes(path);
      EXPECT_EQ(std::string(head.begin(), head.begin() + 4), "RF64");
    } else {
      EXPECT_EQ(written.kind, c.kind) << c.file;
    }
    if (c.exact) {
      EXPECT_LE(MaxDifference(ReadWhole(back), sine), 1.0 / 32767) << c.file;
    }
  }
  const std::string stray = folder.File("stray.bin");
  EXPECT_TRUE(LSoundFile::OpenSink(stray.c_str(), Format(static_cast<LSoundFileKind>(200))).HasError());
  EXPECT_FALSE(LFileExists(stray.c_str()));
}

#ifdef SONVALE_HAVE_FFMPEG

TEST(SoundFile, WhatOurReadersRefuseFFmpegReadsAndAMissingCodecIsNamed) {
  TempFolder folder;
  // Extensible float: our WAVE reader answers 5, FFmpeg reads it.
  const std::string wave = folder.File("float.wav");
  Bytes extra(22, 0);
  extra[0] = 32;  // valid bits
  extra[2] = 3;   // channel mask
  const unsigned char floatGuid[16] = {0x03, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
  std::copy(floatGuid, floatGuid + 16, extra.begin() + 6);
  Bytes data;
  for (int i = 0; i < 20; ++i) {
    float v = static_cast<float>(i) / 20.0f;
    const auto* p = reinterpret_cast<const unsigned char*>(&v);
    data.insert(data.end(), p, p + 4);
  }
  WriteFileBytes(wave, RiffWave({Chunk("fmt ", FmtBody(0xFFFE, 2, 44100, 32, 8, &extra)), Chunk("data", data)}));
  LSoundFileInfo info;
  LSoundSource s = LSoundFile::OpenSource(wave.c_str(), &info);
  ASSERT_FALSE(s.IsError()) << int(s.GetErrorCode());
  EXPECT_EQ(s.GetEndSample(), 10);
  std::vector<float> got = ReadWhole(s);
  EXPECT_FLOAT_EQ(got[19], 19.0f / 20.0f);

  if (!HaveTool("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  // An MP4 whose sound is MPEG-H, for which FFmpeg has no decoder.
  const std::string m4a = folder.File("a.m4a");
  ASSERT_TRUE(FFmpegMake("-f lavfi -i sine=d=0.2 -c:a aac " + ShellQuote(m4a)));
  Bytes bytes = FileBytes(m4a);
  auto patch = [&](const char* from, const char* to) {
    for (size_t i = 0; i + 4 <= bytes.size(); ++i) {
      if (std::equal(from, from + 4, bytes.begin() + static_cast<long>(i)))
        std::copy(to, to + 4, bytes.begin() + static_cast<long>(i));
    }
  };
  patch("mp4a", "mhm1");
  patch("esds", "xsds");
  WriteFileBytes(m4a, bytes);
  s = LSoundFile::OpenSource(m4a.c_str(), &info);
  EXPECT_EQ(s.GetErrorCode(), kLSourceCodecMissing);
  EXPECT_EQ(LSoundFile::OpenErrorMessage(s, "a.m4a", info),
            "Die Datei \"a.m4a\" benötigt den Codec \"mpegh_3d_audio\", der in dieser Ausgabe von Sonvale nicht "
            "verfügbar ist.");

  // MP3 bytes under a WAVE name: the content decides.
  const std::string mp3 = folder.File("eigentlich.wav");
  ASSERT_TRUE(FFmpegMake("-f lavfi -i sine=d=0.3 -c:a libmp3lame -f mp3 " + ShellQuote(mp3)));
  s = LSoundFile::OpenSource(mp3.c_str(), &info);
  ASSERT_FALSE(s.IsError());
  EXPECT_EQ(info.formatName, "mp3");
}

TEST(SoundFile, SaveConvertsRateAndChannelsAndStartsAtTheSourcesPosition) {
  TempFolder folder;
  // Six channels at 96 kHz into MP3: two channels at 48 kHz.
  LSoundFileFormat mp3 = Format(LSoundFileKind::kMP3);
  if (!LSoundFile::MissingCodec(mp3)) {
    const std::string path = folder.File("sechs.mp3");
    ASSERT_EQ(SaveQuietly(MemorySource(SineFrames(96000 / 2, 6, 96000, 500.0), 6, 96000), path, mp3), kLProcessSuccess);
    LSoundSource back = LSoundFile::OpenSource(path.c_str());
    EXPECT_EQ(back.GetSampleRate(), 48000u);
    EXPECT_EQ(back.GetChannels(), 2);
    EXPECT_EQ(back.GetEndSample(), 24000);
  }
  // A chosen rate and channel count, from frame 1000 on.
  LSoundFileFormat wave = Format(LSoundFileKind::kWave, LSoundFileLayout::kFloat);
  wave.sampleRate = 22050;
  wave.channels = 1;
  LSoundSource source = MemorySource(SineFrames(44100, 2, 44100, 300.0), 2, 44100);
  source.Seek(1000);
  const std::string path = folder.File("teil.wav");
  ASSERT_EQ(SaveQuietly(source, path, wave), kLProcessSuccess);
  LSoundSource back = LSoundFile::OpenSource(path.c_str());
  EXPECT_EQ(back.GetSampleRate(), 22050u);
  EXPECT_EQ(back.GetChannels(), 1);
  EXPECT_EQ(back.GetEndSample(), 22050 - 500);

  std::string error;
  EXPECT_EQ(SaveQuietly(MemorySource(SineFrames(10, 1, 8000, 1.0), 1, 8000), folder.File("nicht/da.flac"),
                        Format(LSoundFileKind::kFlac), &error),
            kLProcessFailed);
  EXPECT_NE(error.find("kann nicht geschrieben werden"), std::string::npos) << error;
}

TEST(SoundFile, EverySixteenBitValueRoundTripsExactlyThroughEachLosslessFormat) {
  TempFolder folder;
  // Every 16-bit value once, over two channels.
  Bytes data;
  for (int v = -32768; v <= 32767; ++v) PutLE16(data, static_cast<std::uint16_t>(v));
  const std::string original = folder.File("alle.wav");
  WriteFileBytes(original, WaveFile(1, 2, 44100, 16, data));
  const std::pair<const char*, LSoundFileKind> kinds[] = {
      {"a.flac", LSoundFileKind::kFlac}, {"a.rf64", LSoundFileKind::kRF64}, {"a.aiff", LSoundFileKind::kAiff}};
  for (const auto& [file, kind] : kinds) {
    const std::string there = folder.File(file), back = folder.File(std::string(file) + ".wav");
    ASSERT_EQ(SaveQuietly(LSoundFile::OpenSource(original.c_str()), there, Format(kind)), kLProcessSuccess) << file;
    ASSERT_EQ(SaveQuietly(LSoundFile::OpenSource(there.c_str()), back, Format(LSoundFileKind::kWave)),
              kLProcessSuccess);
    const Bytes got = FileBytes(back);
    ASSERT_EQ(got.size(), data.size() + 44) << file;
    EXPECT_TRUE(std::equal(data.begin(), data.end(), got.begin() + 44)) << file;
  }

  // A-law behind an extensible header reads as loud as behind a plain one.
  Bytes codes;
  for (int c = 0; c < 256; ++c) codes.push_back(static_cast<unsigned char>(c));
  Bytes extra;
  PutLE16(extra, 8);
  PutLE32(extra, 4);
  const unsigned char aLawGuid[16] = {6, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
  extra.insert(extra.end(), aLawGuid, aLawGuid + 16);
  const Bytes wide = RiffWave({Chunk("fmt ", FmtBody(0xFFFE, 1, 8000, 8, 1, &extra)), Chunk("data", codes)});
  const Bytes plainBytes = WaveFile(6, 1, 8000, 8, codes);
  LSoundSource plain = LSoundFile::OpenSource(plainBytes.data(), plainBytes.size(), "plain.wav");
  LSoundSource extensible = LSoundFile::OpenSource(wide.data(), wide.size(), "wide.wav");
  ASSERT_FALSE(plain.IsError());
  ASSERT_FALSE(extensible.IsError()) << int(extensible.GetErrorCode());
  EXPECT_EQ(ReadWhole(extensible), ReadWhole(plain));
}

#endif

TEST(SoundFile, NoSoundSavedToAnyFormatOpensAsNoFramesAndOggEndsAtItsLastGranule) {
  TempFolder folder;
  const std::pair<const char*, LSoundFileKind> kinds[] = {
      {"leer.flac", LSoundFileKind::kFlac}, {"leer.mp3", LSoundFileKind::kMP3}, {"leer.ogg", LSoundFileKind::kOgg},
      {"leer.opus", LSoundFileKind::kOpus}, {"leer.rf64", LSoundFileKind::kRF64}};
  for (const auto& [file, kind] : kinds) {
    if (LSoundFile::MissingCodec(Format(kind))) continue;
    const std::string path = folder.File(file);
    ASSERT_EQ(SaveQuietly(MemorySource({}, 2, 48000), path, Format(kind)), kLProcessSuccess) << file;
    LSoundSource back = LSoundFile::OpenSource(path.c_str());
    ASSERT_FALSE(back.IsError()) << file << " " << int(back.GetErrorCode());
    EXPECT_EQ(back.GetEndSample(), 0) << file;
    EXPECT_EQ(back.GetSampleRate(), 48000u) << file;
    EXPECT_EQ(back.GetChannels(), 2) << file;
  }
  // libvorbisfile (through sox) counts the frames up to the last granule position.
  if (!HaveTool("sox")) return;
  for (const char* rate : {"22050", "44100"}) {
    const std::string path = folder.File(std::string("sox") + rate + ".ogg");
    if (!RunTool("sox -n -r " + std::string(rate) + " -c 2 " + ShellQuote(path) + " synth 1.01 sine 440")) continue;
    std::string frames;
    ASSERT_TRUE(RunTool("soxi -s " + ShellQuote(path), &frames));
    EXPECT_EQ(LSoundFile::OpenSource(path.c_str()).GetEndSample(), std::stoll(frames)) << rate;
  }
}
