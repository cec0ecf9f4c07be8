#pragma once
// SVClipboard: Copy for the editor. The cut list goes into the cyclic clipboard;
// the system clipboard is told it holds our own type and AIFF audio, the AIFF
// only promised: it is rendered from the last copied list when another program
// asks for it (EvRender), so a copy costs nothing until then.
#include "app/front_end.h"
#include "app/system_clipboard.h"
#include "engine/cut_list_audio.h"

// Progress title of rendering the promised audio.
inline constexpr const char* kSVClipboardRenderTitle = "Audio wird Systemzwischenablage kopiert";

class SVClipboard final : public SVClipboardRenderer {
public:
  // view runs the render's progress display.
  SVClipboard(SVSystemClipboard& board, SVFrontEnd& view) : board_(board), view_(view) {}
  ~SVClipboard() override { board_.OwnerGone(this); }
  SVClipboard(const SVClipboard&) = delete;
  SVClipboard& operator=(const SVClipboard&) = delete;

  void Copy(const LCutListAudio& list);
  // Writes the last copied list as AIFF (its own rate and channels) to a
  // temporary file and fills the promise with it.
  bool EvRender(SVSystemClipboard& board, const char* type) override;

  [[nodiscard]] SVSystemClipboard& Board() const { return board_; }

private:
  SVSystemClipboard& board_;
  SVFrontEnd& view_;
};
