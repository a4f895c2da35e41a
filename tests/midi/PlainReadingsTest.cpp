#include "PlainReadings.h"
#include "MIDI2ClipImporter.h"
#include "MIDIDataWriter.h"
#include "MIDILoudnessProcessor.h"
#include "RandomSongs.h"
#include "SMFTrackEventWalker.h"
#include "UTF8.h"

#include <gtest/gtest.h>

#include <QByteArray>

namespace tambrel {

namespace {

using testing::RandomSongs;
using testing::smfBytes;
using testing::TrackBuilder;

template<class Check>
void forRandomSongs(std::uint32_t seed, Check check) {
    RandomSongs songs(seed);
    for (int i = 0; i < 3000; ++i) {
        SCOPED_TRACE(i);
        const Bytes song = songs.next();
        check(song);
        check(songs.damaged(song));
        if (::testing::Test::HasFailure())
            return;
    }
}

// What a walk of one track delivers until it is stopped after `most` events.
std::vector<plain::Event> walked(const Bytes& file, plain::Chunk track, SMFMalformedEventPolicy policy,
                                 std::size_t most) {
    std::vector<plain::Event> events;
    SMFTrackEventWalker::walkTrack(
        file, track.start, track.end, policy, [&](const SMFTimedTrackEvent& event) {
            events.push_back({event.tick, event.status, event.status == MIDIStatus::meta ? event.metaType : 0,
                              event.dataStart, event.dataEnd});
            return events.size() == most ? SMFTrackWalkDecision::stop : SMFTrackWalkDecision::continue_;
        });
    SMFTrackEventReader reader(file, track.start, track.end, policy);
    SMFTimedTrackEvent event;
    while (reader.next(event)) {
    }
    EXPECT_FALSE(reader.next(event)) << "It stays at the end.";
    return events;
}

TEST(SMFTrackEventWalker, deliversWhatAPlainReadingFindsAndStopsWhenAsked) {
    RandomSongs random(1);
    TrackBuilder longest;
    for (int i = 0; i < 16; ++i)
        longest.program(0x0FFFFFFF, 0, 1);
    const Bytes upToTheLastTick = longest.program(15, 0, 2).bytes(), past = longest.program(1, 0, 3).bytes();
    for (int i = 0; i < 60'000; ++i) {
        SCOPED_TRACE(i);
        const Bytes track = i == 0 ? upToTheLastTick : i == 1 ? past : random.track();
        Bytes file(7, 0); // The track's neighbours would complete a cut event.
        file.insert(file.end(), track.begin(), track.end());
        file.insert(file.end(), 5, 0x40);
        const plain::Chunk chunk{7, file.size() - 5};
        const auto most = static_cast<std::size_t>(random.upTo(99) == 0 ? 2 : 1000);
        for (const auto& [policy, defects] :
             {std::pair(SMFMalformedEventPolicy::stop, plain::Defects::endTheTrack),
              {SMFMalformedEventPolicy::skip, plain::Defects::areSkipped}}) {
            auto events = plain::events(file, chunk, defects);
            events.resize(std::min(events.size(), most));
            ASSERT_TRUE(walked(file, chunk, policy, most) == events) << ::testing::PrintToString(track);
        }
    }
}

TEST(SMFTrackChunk, liesWhereAPlainReadingFindsIt) {
    forRandomSongs(2, [](const Bytes& file) {
        if (file.size() < 14)
            return;
        std::vector<SMFTrackChunk> chunks;
        for (const auto [start, end] : plain::tracks(file))
            chunks.push_back({chunks.size(), start - 8, start, end, end - start});
        EXPECT_EQ(SMFTrackEventWalker::trackChunks(file, SMFByteCodec::readU16(file, 10)), chunks);
    });
}

TEST(MIDIFileInfo, agreesWithAPlainReading) {
    forRandomSongs(3, [](const Bytes& file) {
        EXPECT_TRUE(MIDIFileInfo::parse(file) == plain::facts(file)) << ::testing::PrintToString(file);
    });
}

TEST(MIDIFileInfo, namesEveryKey) {
    for (int key = 0; key < 256 * 3; ++key) {
        const Bytes payload{static_cast<std::uint8_t>(key), static_cast<std::uint8_t>(key / 256)};
        const auto song = smfBytes(1, 480, {TrackBuilder().meta(0, MetaType::keySignature, payload)});
        EXPECT_EQ(MIDIFileInfo::parse(song), plain::facts(song));
    }
}

TEST(MIDILoudnessProcessor, agreesWithAPlainReading) {
    forRandomSongs(4, [](const Bytes& file) {
        const MIDIData data{Bytes(file)};
        const MIDIData boosted = MIDILoudnessProcessor::boostedDrumsAndBass(data);
        EXPECT_EQ(plain::bytes(boosted), plain::boosted(file));
        const bool isSong = plain::hasHeader(file) && !plain::tracks(file).empty();
        EXPECT_EQ(boosted.view().data() == data.view().data(), !isSong);
    });
}

TEST(MIDI2ClipBuilder, agreesWithAPlainReading) {
    RandomSongs random(5);
    forRandomSongs(5, [&](const Bytes& file) {
        const Bytes clip = plain::bytes(MIDI2ClipBuilder::build(file));
        EXPECT_EQ(clip, plain::companion(file));
        for (const Bytes& each : {clip, random.damaged(clip)})
            EXPECT_EQ(MIDI2ClipBuilder::summary(each), plain::summary(each));
    });
}

TEST(MIDI2ClipBuilder, keepsAClipOfAWholeFrameAndAMessage) {
    EXPECT_TRUE((MIDI2ClipBuildSummary{28, 5, 1}).hasChannelVoice());
    EXPECT_FALSE((MIDI2ClipBuildSummary{27, 5, 1}).hasChannelVoice());
    EXPECT_FALSE((MIDI2ClipBuildSummary{32, 6, 0}).hasChannelVoice());
}

TEST(MIDI2ClipBuilder, givesUpWhenAsked) {
    std::stop_source stop;
    stop.request_stop();
    const auto song = smfBytes(0, 480, {TrackBuilder().noteOn(0, 0, 60)});
    EXPECT_THROW(static_cast<void>(MIDI2ClipBuilder::build(song, stop.get_token())), MIDI2ClipBuildCancelled);
}

void expectPlainImport(const Bytes& clip) {
    const plain::Import expected = plain::imported(clip);
    plain::Import result;
    try {
        auto [song, summary] = MIDI2ClipImporter::importPlayableSMF(clip);
        result = {"", plain::bytes(song), std::move(summary)};
    } catch (const MIDI2ClipImportError& error) {
        result.error = error.description();
    }
    EXPECT_EQ(result.error, expected.error);
    EXPECT_EQ(result.song, expected.song);
    EXPECT_TRUE(result.summary == expected.summary) << result.summary.debugDescription() << "\n"
                                                    << expected.summary.debugDescription();
}

TEST(MIDI2ClipImporter, agreesWithAPlainReading) {
    RandomSongs random(6);
    for (int i = 0; i < 20'000 && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        const Bytes clip = random.clip();
        expectPlainImport(clip);
        if (i % 4 == 0)
            expectPlainImport(random.damaged(clip));
    }
    std::vector<std::uint32_t> lastTick{0xF0200000, 0, 0, 0};
    lastTick.insert(lastTick.end(), 4096, 0x004FFFFF);
    lastTick.insert(lastTick.end(), {0x00400FFF, 0x20903C64});
    expectPlainImport(testing::clipBytes(lastTick));
    lastTick.insert(lastTick.end(), {0x00400001, 0x20903C64});
    expectPlainImport(testing::clipBytes(lastTick));
}

TEST(MIDIDataWriter, writesQuantitiesOfAnyLength) {
    Bytes appended;
    MIDIDataWriter writer(0);
    for (const std::uint32_t value :
         {0u, 127u, 128u, 16383u, 16384u, 0x0FFFFFFFu, 0x10000000u, 0xFFFFFFFFu}) {
        SMFByteCodec::appendVarLen(value, appended);
        writer.appendVarLen(value);
    }
    EXPECT_EQ(appended, (Bytes{0x00, 0x7F, 0x81, 0x00, 0xFF, 0x7F, 0x81, 0x80, 0x00, 0xFF, 0xFF, 0xFF,
                               0x7F, 0x81, 0x80, 0x80, 0x80, 0x00, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F}));
    EXPECT_EQ(plain::bytes(writer.finish()), appended);
}

TEST(UTF8, knowsTheCharactersThatQtKnows) {
    constexpr std::string_view edges =
        "\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xED\xEF\xF0\xF1\xF4\xF5\xFF";
    std::size_t count = 1;
    for (int length = 0; length <= 4; ++length, count *= edges.size()) {
        for (std::size_t number = 0; number < count; ++number) {
            QByteArray text;
            for (std::size_t rest = number; text.size() < length; rest /= edges.size())
                text += edges[rest % edges.size()];
            std::string repaired;
            for (int at = 0, end = 1; at < length; at = end++) {
                while (end < length && !text.mid(at, end - at).isValidUtf8())
                    ++end;
                const QByteArray character = text.mid(at, end - at);
                end = character.isValidUtf8() ? end : at + 1;
                repaired += character.isValidUtf8() ? character.toStdString() : "\uFFFD";
            }
            ASSERT_EQ(UTF8::repaired(text.toStdString()), repaired);
            ASSERT_EQ(UTF8::isValid(text.toStdString()), text.isValidUtf8());
        }
    }
}

} // namespace
} // namespace tambrel
