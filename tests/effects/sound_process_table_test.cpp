// The table of effect types against the classes it makes.
#include "effects/sound_process_table.h"

#include <gtest/gtest.h>

#include "effects/sound_process_by_name.h"

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
