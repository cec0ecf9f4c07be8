#include "formats/open_error.h"

#include "engine/sound_source.h"

namespace {

// Replaces each "%s" of the text with the next argument.
std::string Fill(const char* text, const char* first, const char* second = "") {
  std::string out;
  const char* args[2] = {first ? first : "", second ? second : ""};
  int next = 0;
  for (const char* p = text; *p; ++p) {
    if (p[0] == '%' && p[1] == 's' && next < 2) {
      out += args[next++];
      ++p;
    } else {
      out += *p;
    }
  }
  return out;
}

}  // namespace

std::string LOpenErrorMessage(unsigned char code, const char* path, const char* codec) {
  switch (code) {
    case kLSourceOK:
      return {};
    case kLSourceClosed:
      return Fill("Die Datei \"%s\" kann nicht geöffnet werden, da das gewählte Rohdatenformat unbekannt ist.", path);
    case kLSourceDamaged:
      return Fill("Die Datei \"%s\" kann nicht geöffnet werden, da sie beschädigt ist.", path);
    case kLSourceCannotOpen:
      return Fill(
          "Die Datei \"%s\" kann nicht geöffnet werden. Überprüfen Sie, ob diese existiert und Sie "
          "Lesezugriff haben.",
          path);
    case kLSourceUnsupported:
      return Fill("Das Format der Datei \"%s\" wird nicht unterstützt.", path);
    case kLSourceCodecMissing:
      return Fill("Die Datei \"%s\" benötigt den Codec \"%s\", der in dieser Ausgabe von Sonvale nicht verfügbar ist.",
                  path, codec ? codec : "unbekannt");
    default:
      return Fill("Die Datei \"%s\" kann nicht geöffnet werden.", path);
  }
}
