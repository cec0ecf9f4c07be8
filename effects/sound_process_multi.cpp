#include "effects/sound_process_multi.h"

#include "effects/sound_process_factory.h"
#include "effects/sound_process_type.h"

LSoundProcessMulti::LSoundProcessMulti(LSoundProcessMulti&& other) noexcept
    : first_(other.first_), last_(other.last_), count_(other.count_) {
  other.first_ = other.last_ = nullptr;
  other.count_ = 0;
}

LSoundProcessMulti& LSoundProcessMulti::operator=(LSoundProcessMulti&& other) noexcept {
  if (this != &other) {
    Clear();
    first_ = other.first_;
    last_ = other.last_;
    count_ = other.count_;
    other.first_ = other.last_ = nullptr;
    other.count_ = 0;
  }
  return *this;
}

void LSoundProcessMulti::Append(std::unique_ptr<LSoundProcess> effect) {
  if (!effect) return;
  LSoundProcess* p = effect.release();
  p->pNext = nullptr;
  if (last_)
    last_->pNext = p;
  else
    first_ = p;
  last_ = p;
  ++count_;
}

void LSoundProcessMulti::Clear() {
  LSoundProcess* p = first_;
  while (p) {
    LSoundProcess* next = p->pNext;
    delete p;
    p = next;
  }
  first_ = last_ = nullptr;
  count_ = 0;
}

LSoundProcess* LSoundProcessMulti::GetAt(int index) const {
  if (index < 0) return nullptr;
  LSoundProcess* p = first_;
  for (; p && index > 0; --index) p = p->pNext;
  return p;
}

LSoundSource LSoundProcessMulti::OpenSource(LSoundSource& input) const {
  LSoundSource current = input;
  for (LSoundProcess* p = first_; p; p = p->pNext) {
    if (!p->IsValid() || p->bDisabled) continue;
    current = p->OpenSource(current);
  }
  return current;
}

void LSoundProcessMulti::LoadFromSDF(LSDFReader& reader, LSDFReaderChunkIterator& iterator) {
  int pendingType = kLSPTypeNone;
  while (iterator.StartNextChunk()) {
    if (iterator.Id() == kLSPMultiChunkType) {
      int type = kLSPTypeNone;
      // A short id reads as 0, which ends the chain at its record.
      if (!iterator.Chunk().ReadInt(type)) type = kLSPTypeNone;
      pendingType = type;
      continue;
    }
    if (iterator.Id() != kLSPMultiChunkEffect) continue;
    if (pendingType == kLSPTypeNone || pendingType == kLSPTypePluginInfo) return;
    std::unique_ptr<LSoundProcess> effect = LSoundProcessCreate(pendingType);
    pendingType = kLSPTypeNone;
    if (!effect) return;
    LSDFReaderChunkIterator record(reader, iterator.Info());
    effect->LoadFromSDF(reader, record);
    // Deliberate: a point-list equaliser never survives a chain record.
    if (effect->GetSoundProcessType() == kLSPTypePointListEq) continue;
    Append(std::move(effect));
  }
}

void LSoundProcessMulti::SaveToSDF(LSDFWriter& writer) const {
  for (const LSoundProcess* p = first_; p; p = p->pNext) {
    writer.WriteInt(kLSPMultiChunkType, p->GetSoundProcessType());
    writer.StartContainer(kLSPMultiChunkEffect);
    p->SaveToSDF(writer);
    writer.EndContainer(kLSPMultiChunkEffect);
  }
}
