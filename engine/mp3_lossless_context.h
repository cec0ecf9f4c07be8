#pragma once
// Lossless MP3 editing: while a context is in lossless mode, the documents
// registered with it keep the MP3 frames of their items as they are (encoder
// delay and padding included) so that saving can copy frames instead of
// re-encoding. The frame layer owns the mode; clients are told when it changes.
//
// Clients register and unregister themselves; a client must unregister before
// it is destroyed. Notifications run on the thread that changes the mode (the
// user-interface thread), outside the context's lock.
#include <mutex>
#include <vector>

class LMP3LosslessContextClient {
public:
  virtual ~LMP3LosslessContextClient() = default;

  // The context's mode changed to lossless (true) or to ordinary editing.
  virtual void EvMP3LosslessModeChanged(bool lossless) = 0;
  // True while the client's edits keep MP3 frames as they are.
  [[nodiscard]] virtual bool IsMP3LosslessMode() const = 0;
};

class LMP3LosslessContext {
public:
  LMP3LosslessContext() = default;
  LMP3LosslessContext(const LMP3LosslessContext&) = delete;
  LMP3LosslessContext& operator=(const LMP3LosslessContext&) = delete;

  void ClientAdd(LMP3LosslessContextClient* client);
  void ClientRemove(LMP3LosslessContextClient* client);
  [[nodiscard]] int ClientCount() const;

  // Tells every client when the mode really changes.
  void ModeSet(bool lossless);
  [[nodiscard]] bool IsLossless() const;

private:
  mutable std::mutex mutex_;
  std::vector<LMP3LosslessContextClient*> clients_;
  bool lossless_ = false;
};
