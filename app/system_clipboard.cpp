#include "app/system_clipboard.h"

void SVSystemClipboard::TextPut(const char* text) {
  DeclareTypes({kSVClipboardTypeText}, nullptr);
  TextSet(text);
}
