#pragma once

#include <fluidsynth.h>

#include <algorithm>
#include <cmath>

namespace tambrel {

/// Makes a voice that has just been started sound as it does `age` seconds after its beginning: what is left
/// of the delays and envelopes of its SoundFont zone (SoundFont 2.01, 8.1.3) is written over them, so that it
/// goes on from there as if it had been playing all along. `Voice` has `float get(int generator)` and `void
/// set(int generator, float value)`. Used by the thread that uses the synthesizer; neither allocates nor
/// locks.
template<class Voice>
class VoiceAging {
public:
    VoiceAging(Voice voice, int key, double age) : voice_(voice), key_(key), age_(age) {}

    void apply() {
        for (const int delay : {GEN_MODLFODELAY, GEN_VIBLFODELAY})
            setSeconds(delay, secondsOf(delay) - age_);
        ageModulation();
        ageVolume();
        skipSample();
    }

private:
    static constexpr float noTime = -32768;
    static constexpr float shortest = -12000; // Timecents: a millisecond.
    static constexpr float fadeIn = -8000;    // 10 ms.
    static constexpr float silence = 1440;    // Centibels, the most that there is.
    static constexpr double fullScale = 960;  // Centibels from the peak of an envelope to its end.

    struct Envelope {
        int delay, attack, hold, keyToHold, decay, keyToDecay, sustain;
    };

    [[nodiscard]] static double seconds(double timecents) { return std::exp2(timecents / 1200); }
    static float timecents(double seconds) { return static_cast<float>(1200 * std::log2(seconds)); }

    [[nodiscard]] double secondsOf(int generator) const {
        const float value = voice_.get(generator);
        return value <= shortest ? 0 : seconds(value);
    }
    [[nodiscard]] double secondsOf(int generator, int perKey) const {
        const double value = voice_.get(generator) + voice_.get(perKey) * (60.0 - key_);
        return value <= shortest ? 0 : seconds(value);
    }
    void setSeconds(int generator, double value) {
        voice_.set(generator, value > 0.001 ? timecents(value) : shortest);
    }

    // Leaves of delay, attack and hold what is still to come. Returns where the decay has got to, 1 being
    // the peak and 0 the end.
    double ageUpToDecay(const Envelope& envelope) {
        const double delay = secondsOf(envelope.delay);
        const double attack = secondsOf(envelope.attack);
        const double hold = secondsOf(envelope.hold, envelope.keyToHold);
        setSeconds(envelope.delay, delay - age_);
        setSeconds(envelope.attack, std::min(attack, delay + attack - age_));
        const double holdLeft = std::min(hold, delay + attack + hold - age_);
        voice_.set(envelope.keyToHold, 0);
        voice_.set(envelope.hold, holdLeft > 0 ? timecents(holdLeft) : noTime);
        const double decaying = age_ - delay - attack - hold;
        const double decay = secondsOf(envelope.decay, envelope.keyToDecay);
        const double sustain = std::clamp(1 - voice_.get(envelope.sustain) / 1000.0, 0.0, 1.0);
        if (decaying <= 0)
            return 1;
        return decay <= 0 ? sustain : std::max(1 - decaying / decay, sustain);
    }

    // The decay is a straight line in decibels, so that what has been lost so far is a matter of attenuation.
    void ageVolume() {
        const float sustain = voice_.get(GEN_VOLENVSUSTAIN);
        const double level =
            ageUpToDecay({GEN_VOLENVDELAY, GEN_VOLENVATTACK, GEN_VOLENVHOLD, GEN_KEYTOVOLENVHOLD,
                          GEN_VOLENVDECAY, GEN_KEYTOVOLENVDECAY, GEN_VOLENVSUSTAIN});
        const double lost = 1 - level;
        constexpr double inaudible = 0.1; // 10 dB above the end, which is 96 dB down.
        if (level < inaudible) {
            voice_.set(GEN_ATTENUATION, silence);
            voice_.set(GEN_VOLENVSUSTAIN, 1000);
            setSeconds(GEN_VOLENVDECAY, 0);
            return;
        }
        add(GEN_ATTENUATION, static_cast<float>(fullScale * lost));
        voice_.set(GEN_VOLENVSUSTAIN, std::max(sustain - static_cast<float>(1000 * lost), 0.0F));
        voice_.set(GEN_VOLENVATTACK, std::max(voice_.get(GEN_VOLENVATTACK), fadeIn));
    }

    // A straight line too, of a value whose depth is given apart: less depth, and the rest of the line drawn
    // accordingly.
    void ageModulation() {
        const double sustain = std::clamp(1 - voice_.get(GEN_MODENVSUSTAIN) / 1000.0, 0.0, 1.0);
        const double level =
            ageUpToDecay({GEN_MODENVDELAY, GEN_MODENVATTACK, GEN_MODENVHOLD, GEN_KEYTOMODENVHOLD,
                          GEN_MODENVDECAY, GEN_KEYTOMODENVDECAY, GEN_MODENVSUSTAIN});
        const auto depth = static_cast<float>(level);
        for (const int generator : {GEN_MODENVTOPITCH, GEN_MODENVTOFILTERFC})
            voice_.set(generator, voice_.get(generator) * depth);
        if (level <= 0 || level >= 1)
            return;
        voice_.set(GEN_MODENVSUSTAIN, static_cast<float>(1000 * (1 - sustain / level)));
        voice_.set(GEN_MODENVDECAY, voice_.get(GEN_MODENVDECAY) + timecents(level));
    }

    // Over the attack in the sample, into its loop, or beyond the end of one that has none, which ends it.
    // How fast the sample is played cannot be asked for; that of its own key at the usual rate is near
    // enough.
    void skipSample() {
        constexpr double usualRate = 44100;
        constexpr double coarseStep = 32768;
        const auto frames = std::min(age_ * usualRate, 32767 * coarseStep);
        // A start beyond the end is moved to the end, and to the loop from there, unless nothing is left
        // between them.
        constexpr float framesLeft = 64;
        if (isLooped())
            add(GEN_ENDADDROFS, -framesLeft);
        add(GEN_STARTADDRCOARSEOFS, static_cast<float>(std::floor(frames / coarseStep)));
        add(GEN_STARTADDROFS, static_cast<float>(std::fmod(frames, coarseStep)));
    }

    [[nodiscard]] bool isLooped() const { return (static_cast<int>(voice_.get(GEN_SAMPLEMODE)) & 1) != 0; }
    void add(int generator, float value) { voice_.set(generator, voice_.get(generator) + value); }

    Voice voice_;
    int key_;
    double age_;
};

} // namespace tambrel
