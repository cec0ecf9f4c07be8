#include <gtest/gtest.h>

#include <string>

#include "base/memory_stream.h"
#include "formats/id3_tag_reader.h"
#include "formats/id3_tag_writer.h"
#include "tag_test_files.h"

using namespace tagtest;

namespace {

std::string Joined(const LArray<LFileTag>& tags) {
  std::string out;
  for (const LFileTag& tag : tags) out += tag.key + "=" + tag.value + ";";
  return out;
}

void PutBE32(Bytes& b, std::uint32_t v) {
  for (int i = 3; i >= 0; --i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}

// An ID3v2.3 frame: id, plain 32-bit size, flags, body.
Bytes Frame23(const char* id, const Bytes& body, unsigned char status = 0) {
  Bytes f;
  PutText(f, id);
  PutBE32(f, static_cast<std::uint32_t>(body.size()));
  f.push_back(0);
  f.push_back(status);
  f.insert(f.end(), body.begin(), body.end());
  return f;
}

Bytes Tag(int major, unsigned char flags, const Bytes& frames) {
  Bytes t{'I', 'D', '3', static_cast<unsigned char>(major), 0, flags};
  const auto size = static_cast<std::uint32_t>(frames.size());
  for (int i = 3; i >= 0; --i) t.push_back(static_cast<unsigned char>((size >> (7 * i)) & 0x7F));
  t.insert(t.end(), frames.begin(), frames.end());
  return t;
}

}  // namespace

TEST(Id3Tag, TheWrittenTagReadsBackItsKeysInOrder) {
  LFileTagDataAudio tags;
  tags.Set("TITLE", "Grüße");
  tags.Set("COMMENT", "Ein Kommentar");
  tags.Set("ORIGINATOR", "not an ID3 key");
  tags.Set("DATE", "2024-05-01");
  tags.Set("ALBUMARTIST", "Alle");
  tags.Set("GENRE", "");
  EXPECT_TRUE(LId3TagWriter::HasFrames(tags));
  LMemoryStream out;
  const long long size = LId3TagWriter::Write(tags, out);
  ASSERT_GT(size, 10);
  const Bytes& bytes = out.Bytes();
  ASSERT_EQ(static_cast<long long>(bytes.size()), size);
  EXPECT_EQ(bytes[3], 4);  // version 2.4
  EXPECT_EQ(Joined(LId3TagReader::Read(bytes.data(), bytes.size())),
            "TITLE=Grüße;COMMENT=Ein Kommentar;DATE=2024-05-01;ALBUMARTIST=Alle;");

  LFileTagDataAudio none;
  none.Set("CUTID", "1");
  EXPECT_FALSE(LId3TagWriter::HasFrames(none));
  EXPECT_EQ(LId3TagWriter::Write(none, out), 0);
}

TEST(Id3Tag, Version23TextInUtf16WithUnsynchronisationAndSkippedFramesIsRead) {
  Bytes title{1, 0xFF, 0xFE};  // UTF-16 with a little-endian byte order mark
  for (char16_t c : std::u16string(u"Tür")) {
    title.push_back(static_cast<unsigned char>(c));
    title.push_back(static_cast<unsigned char>(c >> 8));
  }
  Bytes comment{0, 'e', 'n', 'g', 'd', 'e', 's', 'c', 0, 'n', 'o', 't', 'e'};
  Bytes plainComment{0, 'e', 'n', 'g', 0, 'p', 'l', 'a', 'i', 'n'};
  Bytes frames = Frame23("TIT2", title);
  for (const Bytes& f : {Frame23("COMM", comment), Frame23("TALB", Bytes{0, 'x'}, 0x80) /* compressed */,
                         Frame23("TYER", Bytes{0, '1', '9', '9', '9'}), Frame23("COMM", plainComment),
                         Frame23("TPE1", Bytes{0, 'A', 0, 'B'})}) {
    frames.insert(frames.end(), f.begin(), f.end());
  }
  // Unsynchronise: every 0xFF is followed by a zero byte.
  Bytes unsynced;
  for (unsigned char b : frames) {
    unsynced.push_back(b);
    if (b == 0xFF) unsynced.push_back(0);
  }
  const Bytes tag = Tag(3, 0x80, unsynced);
  EXPECT_EQ(Joined(LId3TagReader::Read(tag.data(), tag.size())), "TITLE=Tür;DATE=1999;COMMENT=plain;ARTIST=A/B;");
}

TEST(Id3Tag, DamagedTagsAreReadAsFarAsTheyGoWithoutReadingOutside) {
  LFileTagDataAudio tags;
  tags.Set("TITLE", "Titel");
  tags.Set("ARTIST", "Interpret");
  LMemoryStream out;
  ASSERT_GT(LId3TagWriter::Write(tags, out), 0);
  const Bytes whole = out.Bytes();
  for (std::size_t n = 0; n <= whole.size(); ++n) {
    // Each length is a copy of its own, so that reading past it shows under a sanitizer.
    const Bytes cut(whole.begin(), whole.begin() + static_cast<long>(n));
    const std::string got = Joined(LId3TagReader::Read(cut.data(), cut.size()));
    if (n == whole.size()) {
      EXPECT_EQ(got, "TITLE=Titel;ARTIST=Interpret;");
    } else if (n < 10 + 10 + 6) {
      EXPECT_EQ(got, "");
    }
  }
  // A frame whose size claims more than the tag.
  Bytes liar = Tag(3, 0, Frame23("TIT2", Bytes{0, 'a', 'b'}));
  liar[10 + 7] = 100;
  EXPECT_EQ(Joined(LId3TagReader::Read(liar.data(), liar.size())), "");
}
