#pragma once

#include <fluidsynth.h>

namespace tambrel {

/// A voice of FluidSynth, to set what holds for it alone. The thread that uses the synthesizer.
class FluidVoice {
public:
    explicit FluidVoice(fluid_voice_t* voice) : voice_(voice) {}
    [[nodiscard]] float get(int generator) const { return fluid_voice_gen_get(voice_, generator); }
    void set(int generator, float value) {
        fluid_voice_gen_set(voice_, generator, value);
        fluid_voice_update_param(voice_, generator);
    }

private:
    fluid_voice_t* voice_;
};

} // namespace tambrel
