#include "SynthTesting.h"

#include <gmock/gmock.h>

namespace tambrel {
namespace {

using namespace testing;

/// The loudest sample of a note's first 50 ms.
float loudness(Synthesizer& synthesizer, int channel) {
    synthesizer.send({static_cast<std::uint8_t>(MIDIStatus::noteOn | channel), 60, 100, 0});
    std::vector<float> left(2400);
    std::vector<float> right(2400);
    synthesizer.render(left.data(), right.data(), 2400);
    return peak(left);
}

TEST(SynthesizerTest, ModeMessagesOfAChannelLeaveTheOthersPlaying) {
    const auto synthesizer = loadedSynthesizer();
    for (std::uint8_t mode = Controller::omniOff; mode <= Controller::polyOn; ++mode) {
        for (const std::uint8_t value : Bytes{0, 1, 16, 127}) {
            synthesizer->reset();
            synthesizer->send({0xB0, mode, value, 0});
            for (const int channel : {0, 1, 15})
                EXPECT_GT(loudness(*synthesizer, channel), 0.01F)
                    << channel << " " << int{mode} << " " << int{value};
        }
    }
}

TEST(SynthesizerTest, ARhythmPartPlaysDrumsAndAMelodicOneDoesNot) {
    const auto synthesizer = loadedSynthesizer();
    for (const std::uint8_t channel : Bytes{3, 9}) {
        for (const std::uint8_t map : Bytes{1, 0}) {
            synthesizer->send(MIDIMessage::system(SystemMessage::rhythmPart, channel, map));
            EXPECT_EQ(synthesizer->channel(channel).presetBank, map == 1 ? 128 : 0);
        }
    }
}

TEST(SynthesizerTest, MasterVolumeIsHeardAndGoesWithAReset) {
    const auto synthesizer = loadedSynthesizer();
    const float full = loudness(*synthesizer, 0);
    for (const SystemMessage reset :
         {SystemMessage::gmReset, SystemMessage::gsReset, SystemMessage::xgReset}) {
        synthesizer->reset();
        synthesizer->send(MIDIMessage::system(SystemMessage::masterVolume, 0, 64));
        EXPECT_NEAR(loudness(*synthesizer, 0), full / 4, full / 50); // 40 log10 of a half.
        synthesizer->send(MIDIMessage::system(reset));
        EXPECT_NEAR(loudness(*synthesizer, 0), full, full / 50);
    }
}

} // namespace
} // namespace tambrel
