// What the synthesizer does to single voices of FluidSynth.

#include "FluidSynthesizer.h"
#include "FluidVoice.h"
#include "VoiceAge.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tambrel {
namespace {

constexpr int drumBank = 128;
constexpr int anyChannel = -1;
constexpr float shortestRelease = -7000; // Timecents: 18 ms.

} // namespace

template<class Call>
void FluidSynthesizer::eachVoice(int channel, Call call) {
    std::array<fluid_voice_t*, maximumVoices + 1> voices; // Ends with a null pointer when not full.
    fluid_synth_get_voicelist(synth_.get(), voices.data(), maximumVoices, -1);
    voices.back() = nullptr;
    for (auto* const* voice = voices.data(); *voice != nullptr; ++voice) {
        if (channel == anyChannel || fluid_voice_get_channel(*voice) == channel)
            call(*voice);
    }
    // What a voice has been told waits for the end of the next call to the synthesizer.
    static_cast<void>(fluid_synth_get_polyphony(synth_.get()));
}

bool FluidSynthesizer::playsDrums(int channel) const noexcept {
    fluid_preset_t* preset = fluid_synth_get_channel_preset(synth_.get(), channel);
    return preset != nullptr && fluid_preset_get_banknum(preset) == drumBank;
}

// The voices of one note share their number, and later ones have a larger one.
void FluidSynthesizer::shapeNote(int channel, int key) noexcept {
    const float cents = song_->tuningOf(channel, key);
    const bool isDrum = song_->changesDrums() && playsDrums(channel);
    if (cents == 0 && !isDrum)
        return;
    unsigned latest = latestShaped_;
    eachVoice(channel, [&](fluid_voice_t* voice) {
        if (fluid_voice_get_key(voice) == key)
            latest = std::max(latest, fluid_voice_get_id(voice));
    });
    if (latest == latestShaped_)
        return;
    eachVoice(channel, [&](fluid_voice_t* each) {
        FluidVoice voice(each);
        if (fluid_voice_get_id(each) != latest)
            return;
        voice.set(GEN_FINETUNE, voice.get(GEN_FINETUNE) + cents);
        if (isDrum)
            song_->shapeDrum(voice, channel, key);
    });
    latestShaped_ = latest;
}

// After a reset there is no other voice of the same channel and key.
void FluidSynthesizer::resumeNote(MIDIMessage noteOn, double age) noexcept {
    const int channel = MIDIStatus::channel(noteOn.status);
    fluid_synth_t* synth = synth_.get();
    if (fluid_synth_get_channel_preset(synth, channel) == nullptr || playsDrums(channel))
        return;
    send(noteOn);
    eachVoice(channel, [&](fluid_voice_t* voice) {
        if (fluid_voice_get_key(voice) == noteOn.data1)
            VoiceAging(FluidVoice(voice), fluid_voice_get_actual_key(voice), age).apply();
    });
}

// FluidSynth's own measure, in percent of real time, lets a third of the latest block in.
void FluidSynthesizer::adaptToLoad() noexcept {
    constexpr double high = 60, low = 40;
    const double load = fluid_synth_get_cpu_load(synth_.get());
    if (load > high)
        mostVoices_ = std::max(std::min(mostVoices_, activeVoices()) * 15 / 16, fewestVoices);
    else if (load < low && mostVoices_ < maximumVoices)
        ++mostVoices_;
}

void FluidSynthesizer::makeRoom() noexcept {
    if (activeVoices() < mostVoices_ || mostVoices_ == maximumVoices)
        return;
    fluid_voice_t* leaves = nullptr;
    const auto rank = [](fluid_voice_t* voice) {
        return std::pair(fluid_voice_is_on(voice) != 0, fluid_voice_get_id(voice));
    };
    eachVoice(anyChannel, [&](fluid_voice_t* voice) {
        const bool isLeaving = fluid_voice_gen_get(voice, GEN_VOLENVRELEASE) == shortestRelease;
        if (!isLeaving && (leaves == nullptr || rank(voice) < rank(leaves)))
            leaves = voice;
    });
    if (leaves == nullptr)
        return;
    FluidVoice(leaves).set(GEN_VOLENVRELEASE, shortestRelease);
    fluid_synth_stop(synth_.get(), fluid_voice_get_id(leaves));
}

} // namespace tambrel
