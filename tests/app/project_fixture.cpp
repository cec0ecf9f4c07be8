#include "project_fixture.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>

#include "base/memory_stream.h"
#include "engine/sound_cache.h"

namespace {

constexpr unsigned char kMagic[4] = {'l', 's', 'd', 'f'};

template <class T>
T Get(const unsigned char* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

// Parses the chunks in [begin, end); false when one does not fit.
bool ParseChunks(const std::vector<unsigned char>& bytes, std::size_t begin, std::size_t end,
                 std::vector<SdfNode>& out) {
  std::size_t at = begin;
  while (at < end) {
    if (end - at < 12) return false;
    SdfNode node;
    node.id = Get<std::uint16_t>(bytes.data() + at);
    node.type = Get<std::uint16_t>(bytes.data() + at + 2);
    const std::uint64_t length = Get<std::uint64_t>(bytes.data() + at + 4);
    at += 12;
    if (length > end - at) return false;
    node.data.assign(bytes.begin() + static_cast<long>(at), bytes.begin() + static_cast<long>(at + length));
    if (node.type == 0 && !ParseChunks(bytes, at, at + length, node.children)) return false;
    at += length;
    out.push_back(std::move(node));
  }
  return true;
}

bool IsCutListContainer(unsigned short id) { return id == 2009 || id == 2010 || id == 4005 || id == 4006; }

void Dump(const std::vector<SdfNode>& nodes, int depth, unsigned short parent, unsigned short grandParent,
          std::ostringstream& out) {
  for (const SdfNode& node : nodes) {
    out << std::string(static_cast<std::size_t>(depth) * 2, ' ') << node.id << " t" << node.type << " n"
        << node.data.size();
    if (node.type == 0) {
      out << "\n";
      Dump(node.children, depth + 1, node.id, parent, out);
      continue;
    }
    std::vector<unsigned char> data = node.data;
    std::vector<bool> masked(data.size(), false);
    if (IsCutListContainer(parent) && node.id == 1 && data.size() >= 10) {
      for (std::size_t r = 10; r + 22 <= data.size(); r += 22) masked[r] = masked[r + 1] = true;
    }
    if (IsCutListContainer(grandParent) && parent == 2 && node.id == 1) masked.assign(data.size(), true);
    out << " ";
    for (std::size_t i = 0; i < data.size(); ++i) {
      if (masked[i])
        out << "xx";
      else
        out << std::hex << std::setw(2) << std::setfill('0') << static_cast<int>(data[i]) << std::dec;
    }
    out << "\n";
  }
}

}  // namespace

SdfFile SdfParse(const std::vector<unsigned char>& bytes) {
  SdfFile file;
  if (bytes.size() < 12 + 12 + 4 || std::memcmp(bytes.data(), kMagic, 4) != 0 || Get<std::uint16_t>(&bytes[4]) != 1)
    return file;
  file.fileType = Get<std::uint32_t>(&bytes[6]);
  file.dataVersion = Get<std::uint16_t>(&bytes[10]);
  if (Get<std::uint16_t>(&bytes[12]) != 0 || Get<std::uint16_t>(&bytes[14]) != 0) return file;
  const std::uint64_t length = Get<std::uint64_t>(&bytes[16]);
  if (length != bytes.size() - 24 - 4 || std::memcmp(bytes.data() + bytes.size() - 4, kMagic, 4) != 0) return file;
  file.valid = ParseChunks(bytes, 24, 24 + length, file.top);
  return file;
}

const SdfNode* SdfFind(const std::vector<SdfNode>& nodes, std::initializer_list<unsigned short> path, int nth) {
  const std::vector<SdfNode>* level = &nodes;
  const SdfNode* found = nullptr;
  std::size_t step = 0;
  for (unsigned short id : path) {
    found = nullptr;
    int seen = 0;
    const bool last = ++step == path.size();
    for (const SdfNode& node : *level) {
      if (node.id != id) continue;
      if (!last || seen++ == nth) {
        found = &node;
        break;
      }
    }
    if (!found) return nullptr;
    level = &found->children;
  }
  return found;
}

std::vector<unsigned short> SdfIds(const std::vector<SdfNode>& nodes) {
  std::vector<unsigned short> ids;
  for (const SdfNode& node : nodes) ids.push_back(node.id);
  return ids;
}

long long SdfInt64(const SdfNode* node) {
  EXPECT_TRUE(node && node->data.size() == 8);
  return node && node->data.size() == 8 ? Get<long long>(node->data.data()) : -1;
}

int SdfInt(const SdfNode* node) {
  EXPECT_TRUE(node && node->data.size() == 4);
  return node && node->data.size() == 4 ? Get<int>(node->data.data()) : -1;
}

bool SdfBool(const SdfNode* node) {
  EXPECT_TRUE(node && node->data.size() == 1);
  return node && node->data.size() == 1 && node->data[0] != 0;
}

std::string SdfString(const SdfNode* node) {
  EXPECT_TRUE(node && !node->data.empty() && node->data.back() == 0);
  if (!node || node->data.empty()) return {};
  return std::string(reinterpret_cast<const char*>(node->data.data()));
}

std::string SdfDump(const std::vector<unsigned char>& bytes) {
  SdfFile file = SdfParse(bytes);
  std::ostringstream out;
  out << (file.valid ? "valid" : "INVALID") << " type " << file.fileType << " version " << file.dataVersion << "\n";
  Dump(file.top, 0, 0, 0, out);
  return out.str();
}

std::vector<unsigned char> PersistedList(unsigned int rate, unsigned char channels,
                                         const std::vector<PersistedSegment>& segments) {
  std::vector<unsigned char> out(10 + 22 * segments.size());
  std::memcpy(&out[0], &rate, 4);
  out[4] = channels;
  out[5] = 0;
  const std::int32_t count = static_cast<std::int32_t>(segments.size());
  std::memcpy(&out[6], &count, 4);
  for (std::size_t i = 0; i < segments.size(); ++i) {
    unsigned char* record = &out[10 + 22 * i];
    std::memcpy(record, &segments[i].item, 2);
    std::memcpy(record + 2, &segments[i].length, 8);
    std::memcpy(record + 10, &segments[i].gain, 4);
    std::memcpy(record + 14, &segments[i].offset, 8);
  }
  return out;
}

SVFile& ProjectTest::AddDocument(const LCutListAudio& list, const std::string& path, int tab) {
  auto file = std::make_shared<SVFile>(list);
  file->PathSet(path.c_str());
  const std::size_t slash = path.rfind('/');
  SVFileGUI* window =
      Windows().FileWindowAdd(file, slash == std::string::npos ? path.c_str() : path.c_str() + slash + 1, false, tab);
  return *window->File();
}

std::vector<unsigned char> ProjectTest::SaveToMemory(SVWindowManager& windows, bool link, LProcessResult expected) {
  LSVSaveProject request(windows, "/memory/project.svp");
  LMemoryStream stream;
  LProcessInterfaceQuiet process;
  EXPECT_EQ(SVProjectWrite(process, request, stream, link), expected) << process.Error();
  return stream.Bytes();
}

LProcessResult ProjectTest::LoadFromMemory(SVWindowManager& windows, const std::vector<unsigned char>& bytes,
                                           LArray<LStringLong>* messages) {
  LSVLoadProject request(windows, "/memory/project.svp");
  request.FilesFolderSet(temp_.File("carried").c_str());
  LMemoryStream stream(bytes.data(), bytes.size());
  LProcessInterfaceQuiet process;
  const LProcessResult result = SVProjectRead(process, request, stream);
  if (messages) *messages = request.Messages();
  return result;
}

void ProjectTest::CacheEmpty() {
  LSoundCache::Instance().DeleteCachedFiles();
  for (const auto& entry : std::filesystem::directory_iterator(cacheFolder_)) {
    const std::string name = entry.path().filename().string();
    // The lock file belongs to the running cache; the items' files go.
    if (!name.empty() && name[0] >= '0' && name[0] <= '9') std::filesystem::remove(entry.path());
  }
}
