#include "effects/cb_radio_chain.h"

#include <initializer_list>
#include <string>

#include "effects/sound_process_setting_text.h"
#include "effects/sound_process_table.h"
#include "effects/sound_process_type.h"

namespace {

struct Link {
  int type;
  std::initializer_list<const char*> settings;
};

// Band-pass, distortion, noise (the AM receiver with its hiss and no fading) and
// the squelch (a gate that opens above the hiss).
const Link kLinks[] = {
    {kLSPTypeHighPass, {"Frequenz=400", "Ordnung=24"}},
    {kLSPTypeLowPass, {"Frequenz=2800", "Ordnung=24"}},
    {kLSPTypeDistortion, {"Antrieb=60", "Mischung=100"}},
    {kLSPTypeAMRadio, {"Untere Grenze=300", "Obere Grenze=3000", "Rauschen=-36", "Schwund=0"}},
    {kLSPTypeNoiseGate, {"Schwelle=-30", "Dämpfung=90", "Angriff=1", "Haltezeit=150", "Freigabe=40"}},
};

}  // namespace

LSoundProcessMulti LCBRadioChain() {
  LSoundProcessMulti chain;
  for (const Link& link : kLinks) {
    const LSoundProcessTypeRow* row = LSoundProcessTypeRowOf(link.type);
    if (!row || !row->make) continue;
    std::unique_ptr<LSoundProcess> effect = row->make();
    // A label the effect does not have keeps its default.
    for (const char* setting : link.settings) (void)LSoundProcessSetFromText(*effect, setting, nullptr);
    chain.Append(std::move(effect));
  }
  return chain;
}
