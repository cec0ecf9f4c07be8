#include "formats/open_error.h"

#include <gtest/gtest.h>

#include "engine/sound_source.h"

TEST(OpenError, EachCodeHasItsGermanMessageNamingTheFile) {
  EXPECT_EQ(LOpenErrorMessage(kLSourceCannotOpen, "/a/b.wav"),
            "Die Datei \"/a/b.wav\" kann nicht geöffnet werden. Überprüfen Sie, ob diese existiert und Sie "
            "Lesezugriff haben.");
  EXPECT_EQ(LOpenErrorMessage(kLSourceDamaged, "x.wav"),
            "Die Datei \"x.wav\" kann nicht geöffnet werden, da sie beschädigt ist.");
  EXPECT_EQ(LOpenErrorMessage(kLSourceUnsupported, "x.wav"), "Das Format der Datei \"x.wav\" wird nicht unterstützt.");
  EXPECT_EQ(
      LOpenErrorMessage(kLSourceCodecMissing, "x.wav", "GSM 6.10"),
      "Die Datei \"x.wav\" benötigt den Codec \"GSM 6.10\", der in dieser Ausgabe von Sonvale nicht verfügbar ist.");
  EXPECT_NE(LOpenErrorMessage(kLSourceClosed, "x.raw").find("\"x.raw\""), std::string::npos);
  EXPECT_EQ(LOpenErrorMessage(kLSourceOK, "x.wav"), "");
  // Percent signs in the path are no format directives.
  EXPECT_EQ(LOpenErrorMessage(kLSourceDamaged, "%s%d.wav"),
            "Die Datei \"%s%d.wav\" kann nicht geöffnet werden, da sie beschädigt ist.");
}
