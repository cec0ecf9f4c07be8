// The RIFF/WAVE tag reader on any bytes, and the tag writer on what it read.
// Whatever is read is well-formed UTF-8 and reads the same through the iterator
// and LWavTagsRead. The tags read are then written back into the same bytes:
// a file whose chunks run past its end is refused untouched; otherwise every
// chunk that is not a tag chunk keeps its place and bytes, the RIFF size fits
// the file, and reading again gives what the writer promises for each key (the
// INFO keys and markers whole, the broadcast and cart fields cut at their
// widths). Writing what was read back once more changes no tag.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "base/memory_stream.h"
#include "formats/riff_chunk_walker.h"
#include "formats/riff_tag_chunk.h"
#include "formats/wav_tag_iterator.h"
#include "formats/wav_tags.h"
#include "fuzz_check.h"
#include "tag_round_trip.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::uint32_t kPlainRate = 44100;
constexpr std::uint64_t kRiffSizeMax = 0xFFFFFFFFu;

// Where the writer makes its ID3 tags: a folder of this run's own, gone at exit.
const std::string& TempFolder() {
  // Never destroyed: the exit handler that removes the folder, registered while it
  // is made, runs after its destructor would.
  static const std::string& folder = *[] {
    const char* base = std::getenv("TMPDIR");
    auto* pattern = new std::string(std::string(base && *base ? base : "/tmp") + "/fuzz_riff_tags-XXXXXX");
    FuzzCheck(mkdtemp(pattern->data()) != nullptr, "a temporary folder can be made");
    std::atexit([] { std::filesystem::remove_all(TempFolder()); });
    return pattern;
  }();
  return folder;
}

bool FolderEmpty(const std::string& folder) {
  std::error_code error;
  return std::filesystem::is_empty(folder, error) && !error;
}

void Put32(Bytes& b, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}

// A short 16-bit mono WAVE file without tags.
Bytes PlainWave() {
  Bytes b = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
  Put32(b, 16);
  Put32(b, 0x00010001);  // PCM, one channel
  Put32(b, kPlainRate);
  Put32(b, kPlainRate * 2);
  Put32(b, 0x00100002);  // block align 2, 16 bits
  b.insert(b.end(), {'d', 'a', 't', 'a'});
  Put32(b, 20);
  for (int i = 0; i < 20; ++i) b.push_back(static_cast<unsigned char>(i * 13));
  const auto size = static_cast<std::uint32_t>(b.size() - 8);
  std::memcpy(b.data() + 4, &size, 4);
  return b;
}

bool IsTagChunk(const LRiffChunk& chunk) {
  switch (chunk.id) {
    case kLRiffIdCue:
    case kLRiffIdId3:
    case kLRiffIdId3Upper:
    case kLRiffIdDisp:
    case kLRiffIdBext:
    case kLRiffIdCart:
    case kLRiffIdCset:
    case kLRiffIdJunk:
      return true;
    default:
      return chunk.id == kLRiffIdList && chunk.listType == kLRiffIdInfo;
  }
}

// Every chunk of the old file that is not a tag chunk lies at the same place
// with the same bytes in the new one, and so does everything before the RIFF size.
void CheckOtherChunksKept(const Bytes& before, const Bytes& after) {
  LMemoryStream in(before.data(), before.size());
  LRiffChunkWalker walker(in);
  FuzzCheck(walker.Start(), "the file written was a RIFF/WAVE file");
  const std::size_t sizeField = static_cast<std::size_t>(walker.RiffOffset()) + 4;
  FuzzCheck(after.size() >= sizeField + 4 && std::memcmp(before.data(), after.data(), sizeField) == 0,
            "the bytes before the RIFF size stay");
  LRiffChunk chunk;
  while (walker.Next(&chunk)) {
    if (IsTagChunk(chunk)) continue;
    const auto from = static_cast<std::size_t>(chunk.offset);
    const auto to = static_cast<std::size_t>(chunk.BodyOffset() + chunk.available);
    FuzzCheck(to <= after.size() && std::memcmp(before.data() + from, after.data() + from, to - from) == 0,
              "chunks other than tag chunks keep their place and bytes");
  }
  std::uint32_t riffSize = 0;
  std::memcpy(&riffSize, after.data() + sizeField, 4);
  const std::uint64_t exact = after.size() - sizeField - 4;
  if (exact <= kRiffSizeMax) FuzzCheck(riffSize == exact, "the RIFF size reaches to the end of the file");
}

// The sample rate that the tag reader takes from the file's fmt chunk.
std::uint32_t FileRate(const Bytes& file) {
  LMemoryStream in(file.data(), file.size());
  LWavTagIterator reader(in);
  return reader.Open() ? reader.SampleRate() : 0;
}

// Writes tags into file and answers the result; a refused file stays as it was.
LWavTagsResult Write(Bytes& file, const LFileTagDataAudio& tags, bool id3) {
  const Bytes before = file;
  LMemoryStream stream{Bytes(file)};
  LWavTagsWriteOptions options;
  options.id3 = id3;
  options.tempFolder = TempFolder();
  const LWavTagsResult result = LWavTagsWrite(stream, tags, options);
  FuzzCheck(FolderEmpty(TempFolder()), "the writer leaves no temporary file behind");
  if (result != LWavTagsResult::Ok) {
    FuzzCheck(stream.Bytes() == before, "a refused file is left untouched");
    return result;
  }
  file = stream.Bytes();
  CheckOtherChunksKept(before, file);
  return result;
}

LFileTagDataAudio Read(const Bytes& file) {
  LMemoryStream in(file.data(), file.size());
  LFileTagDataAudio tags;
  FuzzCheck(LWavTagsRead(in, &tags) == LWavTagsResult::Ok, "a file the writer wrote into reads");
  return tags;
}

// Writes tags into file, reads them back and compares with what the writer promises.
LFileTagDataAudio WriteAndReadBack(Bytes& file, const LFileTagDataAudio& tags, bool id3, const char* what) {
  const std::uint32_t rate = FileRate(file);
  bool looseUmid = false;
  const FuzzTagMap expected = FuzzTagsAfterWrite(tags, rate, &looseUmid);
  FuzzCheck(Write(file, tags, id3) == LWavTagsResult::Ok, "a whole file takes the tags");
  LFileTagDataAudio back = Read(file);
  FuzzTagsCheckSame(FuzzTagsRead(back), expected, looseUmid, what);
  return back;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  LMemoryStream in(data, size);
  LFileTagDataAudio first;
  const LWavTagsResult result = LWavTagsRead(in, &first);
  if (result != LWavTagsResult::Ok) {
    FuzzCheck(result == LWavTagsResult::NotWave, "bytes in memory fail only as not being WAVE");
    return 0;
  }
  (void)FuzzTagsRead(first);

  // The iterator hands out the same tags in the same order.
  LMemoryStream again(data, size);
  LWavTagIterator iterator(again);
  FuzzCheck(iterator.Open(), "the iterator opens what LWavTagsRead read");
  std::size_t index = 0;
  const char* key = nullptr;
  const char* value = nullptr;
  while (iterator.Next(&key, &value)) {
    FuzzCheck(index < first.Count() && first.At(index).key == key && first.At(index).value == value,
              "the iterator and LWavTagsRead agree");
    ++index;
  }
  FuzzCheck(index == first.Count(), "the iterator hands out every tag");

  // Back into the same bytes, or into a plain file when these are refused.
  const bool id3 = size % 2 == 1;
  Bytes file(data, data + size);
  LFileTagDataAudio second;
  bool looseUmid = false;
  const FuzzTagMap expected = FuzzTagsAfterWrite(first, FileRate(file), &looseUmid);
  const LWavTagsResult written = Write(file, first, id3);
  if (written == LWavTagsResult::Ok) {
    second = Read(file);
    FuzzTagsCheckSame(FuzzTagsRead(second), expected, looseUmid, "the tags read come back from the same file");
  } else {
    FuzzCheck(written == LWavTagsResult::Damaged, "a file in memory is refused only as damaged");
    file = PlainWave();
    second = WriteAndReadBack(file, first, id3, "the tags read come back from a plain file");
  }
  // Once written, the tags are what the writer keeps: writing them again changes nothing.
  const LFileTagDataAudio third = WriteAndReadBack(file, second, !id3, "tags written twice read the same");
  FuzzCheck(FuzzTagsRead(third) == FuzzTagsRead(second), "tags written twice read the same");
  return 0;
}
