#pragma once

#include "FluidSettings.h"
#include "ParameterSetter.h"
#include "SongSettings.h"
#include "Synthesizer.h"

#include <optional>

namespace tambrel {

/// FluidSynth as the General MIDI synthesizer. One thread at a time.
class FluidSynthesizer final : public Synthesizer {
public:
    FluidSynthesizer(double sampleRate, const SynthesizerOptions& options);

    void loadSoundBank(const std::filesystem::path& bank) override;
    void send(MIDIMessage message) noexcept override;
    void resumeNote(MIDIMessage noteOn, double age) noexcept override;
    void reset() noexcept override;
    void releaseNotes() noexcept override;
    void render(float* left, float* right, int frames) noexcept override;
    [[nodiscard]] int activeVoices() const noexcept override;
    [[nodiscard]] ChannelReading channel(int number) const override;

private:
    /// Voices that sound at most; what goes beyond takes the place of the least important.
    static constexpr int maximumVoices = 1024;
    /// The same when the processor has no time for more.
    static constexpr int fewestVoices = 128;

    /// Follows the load: fewer voices when rendering takes most of the time there is, more when it does not.
    void adaptToLoad() noexcept;
    /// Ends a voice if there are as many as may be: one that is released already, or the oldest.
    void makeRoom() noexcept;

    /// Lets go of the keys and pedals of a channel, whose pedals stay as they are for the notes to come.
    void releaseNotes(int channel) noexcept;
    /// Calls with every voice of the channel that sounds.
    template<class Call>
    void eachVoice(int channel, Call call);
    [[nodiscard]] bool playsDrums(int channel) const noexcept;
    /// Gives the voices that a note has just begun what the song has set for its key.
    void shapeNote(int channel, int key) noexcept;
    void sendController(int channel, std::uint8_t number, std::uint8_t value) noexcept;
    void sendSystem(MIDIMessage message) noexcept;
    void resetTo(SystemMessage standard) noexcept;
    void silence() noexcept;

    FluidSettings settings_;
    std::unique_ptr<fluid_synth_t, DestroyedBy<delete_fluid_synth>> synth_;
    std::optional<SongSettings> song_;
    std::optional<ParameterSetter> parameters_;
    const SynthesizerOptions options_;
    int mostVoices_ = maximumVoices;
    unsigned latestShaped_ = 0; // The latest voice of which that is true.
};

} // namespace tambrel
