#include "engine/mp3_lossless_context.h"

#include <algorithm>

void LMP3LosslessContext::ClientAdd(LMP3LosslessContextClient* client) {
  if (!client) return;
  std::lock_guard<std::mutex> lock(mutex_);
  if (std::find(clients_.begin(), clients_.end(), client) == clients_.end()) clients_.push_back(client);
}

void LMP3LosslessContext::ClientRemove(LMP3LosslessContextClient* client) {
  std::lock_guard<std::mutex> lock(mutex_);
  clients_.erase(std::remove(clients_.begin(), clients_.end(), client), clients_.end());
}

int LMP3LosslessContext::ClientCount() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(clients_.size());
}

bool LMP3LosslessContext::IsLossless() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return lossless_;
}

void LMP3LosslessContext::ModeSet(bool lossless) {
  std::vector<LMP3LosslessContextClient*> clients;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (lossless_ == lossless) return;
    lossless_ = lossless;
    clients = clients_;
  }
  // Outside the lock: a client may copy itself (and so register) while it reacts.
  for (LMP3LosslessContextClient* client : clients) client->EvMP3LosslessModeChanged(lossless);
}
