#include "app/ef_delete.h"

int SVEfDelete::ProcessCutList(LProcessInterface& process, LCutListAudio& piece) {
  (void)process;
  const long long length = piece.GetLength();
  piece.Clear();
  if (Selection().HasBand() && length > 0) piece.EfInsertSilence(0, length);
  return kLProcessSuccess;
}
