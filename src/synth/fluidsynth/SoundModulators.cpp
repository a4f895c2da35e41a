#include "SoundModulators.h"

#include "FluidSettings.h"
#include "MIDIMessage.h"

namespace tambrel {
namespace {

using FluidModulator = std::unique_ptr<fluid_mod_t, DestroyedBy<delete_fluid_mod>>;

constexpr int upwards = FLUID_MOD_LINEAR | FLUID_MOD_UNIPOLAR | FLUID_MOD_POSITIVE;
constexpr int control = FLUID_MOD_CC | upwards;
constexpr int centred = FLUID_MOD_CC | FLUID_MOD_LINEAR | FLUID_MOD_BIPOLAR | FLUID_MOD_POSITIVE;
constexpr int pedal = FLUID_MOD_CC | FLUID_MOD_SWITCH | FLUID_MOD_UNIPOLAR | FLUID_MOD_POSITIVE;

struct Source {
    int number = 0;
    int flags = 0;
};

struct Row {
    const char* name;
    Source source;
    int generator;
    double amount; // At the source's end; of a centred one at either end.
    Source second = {};
};

// Times and rates in timecents and cents: 1200 doubles them. Levels in centibels.
constexpr Row rows[]{
    {"resonance", {Controller::resonance, centred}, GEN_FILTERQ, 200},
    {"release", {Controller::release, centred}, GEN_VOLENVRELEASE, 3600},
    {"attack", {Controller::attack, centred}, GEN_VOLENVATTACK, 9600},
    {"cutoff", {Controller::cutoff, centred}, GEN_FILTERFC, 6000},
    {"decay", {Controller::decay, centred}, GEN_VOLENVDECAY, 3600},
    {"vibrato rate", {Controller::vibratoRate, centred}, GEN_VIBLFOFREQ, 2400},
    {"vibrato depth", {Controller::vibratoDepth, centred}, GEN_VIBLFOTOPITCH, 100},
    {"vibrato delay", {Controller::vibratoDelay, centred}, GEN_VIBLFODELAY, 9600},
    {"soft pedal", {Controller::softPedal, pedal}, GEN_ATTENUATION, 50},
    {"soft pedal, tone", {Controller::softPedal, pedal}, GEN_FILTERFC, -2400},
    // As channel pressure does by itself.
    {"polyphonic pressure", {FLUID_MOD_KEYPRESSURE, upwards}, GEN_VIBLFOTOPITCH, 50},
    {"modulation depth",
     {Controller::modulation, control},
     GEN_VIBLFOTOPITCH,
     640,
     {PrivateController::modulationDepth, centred}},
    {"key shift", {PrivateController::keyShift, centred}, GEN_COARSETUNE, 64},
    {"fine tuning", {PrivateController::fineTuning, centred}, GEN_FINETUNE, 64},
};

} // namespace

void addSoundModulators(fluid_synth_t& synth) {
    const FluidModulator modulator(new_fluid_mod());
    for (const Row& row : rows) {
        fluid_mod_set_source1(modulator.get(), row.source.number, row.source.flags);
        fluid_mod_set_source2(modulator.get(), row.second.number, row.second.flags);
        fluid_mod_set_dest(modulator.get(), row.generator);
        fluid_mod_set_amount(modulator.get(), row.amount);
        fluid_synth_add_default_mod(&synth, modulator.get(), FLUID_SYNTH_OVERWRITE);
    }
}

} // namespace tambrel
