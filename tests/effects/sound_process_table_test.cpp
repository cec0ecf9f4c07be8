// The table of effect types against the classes it makes.
#include "effects/sound_process_table.h"

#include <gtest/gtest.h>

#include "effects/drc_point_line.h"
#include "effects/parametric_eq.h"
#include "effects/sound_process_by_name.h"
#include "effects/sound_process_listing.h"

TEST(SoundProcessTable, EveryEffectMadeAnswersItsRowsIdAndNameAndTheOfferedOnesAreFoundByWord) {
  for (const LSoundProcessTypeRow& row : LSoundProcessTypeRows()) {
    if (!row.make) continue;
    std::unique_ptr<LSoundProcess> effect = row.make();
    char name[kLPathMax] = {};
    EXPECT_EQ(effect->GetSoundProcessType(), row.type);
    EXPECT_STREQ(effect->GetName(name), row.name);
    if (!row.word) continue;
    EXPECT_EQ(LSoundProcessCreateByName(row.word)->GetSoundProcessType(), row.type) << row.word;
    EXPECT_NE(LSoundProcessNamesText().find(row.word), std::string::npos) << row.word;
  }
  EXPECT_EQ(LSoundProcessTypeName(18), nullptr) << "a gap in the ids names nothing";
}

TEST(SoundProcessTable, TheListingNamesEveryOfferedEffectWithItsParametersPointsAndPresets) {
  const std::string listing = LSoundProcessListing();
  for (const LSoundProcessTypeRow& row : LSoundProcessTypeRows()) {
    if (!row.word || !row.make) continue;
    std::unique_ptr<LSoundProcess> effect = row.make();
    EXPECT_NE(listing.find(std::string(row.word) + " (" + row.name + ")\n"), std::string::npos) << row.word;
    const std::string entry = LSoundProcessDescribe(*effect, row.word);
    EXPECT_NE(listing.find(entry), std::string::npos) << row.word;
    for (int i = 0; i < effect->GetNumPresets(); ++i) {
      char preset[kLPathMax] = {};
      effect->GetPresetsName(i, preset);
      EXPECT_NE(entry.find(preset), std::string::npos) << row.word << " " << preset;
    }
  }
  LSPDRCPointLine drc;
  const std::string entry = LSoundProcessDescribe(drc, "grafikkompressor");
  EXPECT_NE(entry.find("\n  Angriff: 0,1 bis 500 ms (Standard: 10)\n"), std::string::npos) << entry;
  EXPECT_NE(entry.find("\n  Punkte: Eingang -90 bis 0 dB = Ausgang -90 bis 20 dB (Standard: -90:-90;-20:-20;0:-10)\n"),
            std::string::npos)
      << entry;
  EXPECT_EQ(entry.find("-20 dB:"), std::string::npos) << "points are not listed as parameters too";
  LSPParametricEqBand band;
  EXPECT_NE(LSoundProcessDescribe(band, "parametrischereq").find("Typ: 0 bis 3 (0 = Glocke"), std::string::npos);
}
