#include "app/file_modifier.h"

#include "app/core_utils.h"

bool LFileModifier::Start(const char* description, bool channelEdit) {
  if (started_) return true;
  started_ = SVCoreUtils::StartModifyFile(window_, description, channelEdit);
  return started_;
}

bool LFileModifier::Commit() {
  if (!started_) return false;
  committed_ = SVCoreUtils::EndModifyFile(window_);
  return committed_;
}

LFileModifier::~LFileModifier() {
  if (!started_ || committed_) return;
  SVCoreUtils::RollBackModifyFile(window_);
}
