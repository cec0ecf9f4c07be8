#include "app/file_undo.h"

void SVFileUndo::Clear() {
  description[0] = '\0';
  timeStamp[0] = '\0';
  bookmarks.clear();
  cutList.Clear();
  regionChange = SVRegionChange();
}
