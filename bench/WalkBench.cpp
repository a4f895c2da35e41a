#include "BareWalk.h"
#include "InterleavedRun.h"
#include "LargeClip.h"
#include "LargeFile.h"
#include "MIDI2ClipBuilder.h"
#include "MIDI2ClipImporter.h"
#include "MIDIFileInfo.h"
#include "MIDILoudnessProcessor.h"
#include "SMFTrackEventWalker.h"
#include "Timeline.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace tambrel::bench {
namespace {

WalkSums walkerSums(ByteView file) {
    WalkSums sums;
    for (const SMFTrackChunk& track : SMFTrackEventWalker::trackChunks(file, 65535)) {
        std::uint32_t lastTick = 0;
        SMFTrackEventWalker::walk(file, track, SMFMalformedEventPolicy::stop, [&](const auto& event) {
            lastTick = event.tick;
            if (MIDIStatus::kind(event.status) == MIDIStatus::noteOn && file[event.dataStart + 1] != 0)
                ++sums.noteOns;
            return SMFTrackWalkDecision::continue_;
        });
        sums.lastTicks += lastTick;
    }
    return sums;
}

// All speeds are compared with that of the first step. A crowd is walked in half the time, but the timeline
// has as many events to put in order and to write.
std::vector<Step> steps(const MIDIData& file, Density density) {
    const double timelineRatio = density == Density::song ? 0.4 : 0.3;
    const std::size_t size = file.size();
    auto copy = std::make_shared<Bytes>(size);
    return {
        {"bare hand-written walk", size, [file] { keep(bareWalk(file)); }},
        {"walker", size, [file] { keep(walkerSums(file)); }, 0.8},
        {"facts", size, [file] { keep(MIDIFileInfo::parse(file)); }, 0.5},
        {"player timeline", size, [file] { keep(Timeline::build(file)->duration()); }, timelineRatio},
        {"companion clip", size, [file] { keep(MIDI2ClipBuilder::build(file)); }},
        {"Loudness variant", size, [file] { keep(MIDILoudnessProcessor::boostedDrumsAndBass(file)); }},
        {"copy of the bytes", size,
         [file, copy] {
             std::ranges::copy(file.view(), copy->begin());
             keep(*copy);
         }},
    };
}

bool measure(std::size_t megabytes, int trackCount, int rounds, Density density) {
    const MIDIData file(largeFile(megabytes * 1'000'000, trackCount, density));
    const WalkSums sums = bareWalk(file);
    std::printf("\n%zu MB (%s), %d tracks, %llu notes, %d rounds\n", megabytes,
                density == Density::song ? "song" : "crowd", trackCount,
                static_cast<unsigned long long>(sums.noteOns), rounds);
    if (walkerSums(file) != sums) {
        std::fprintf(stderr, "The walker and the bare walk disagree.\n");
        return false;
    }
    return runInterleaved(steps(file, density), rounds);
}

// The first step, a bare pass, knows no tracks and writes nothing.
bool measureImport(int tracks, int rounds) {
    constexpr std::size_t bytesOfAMillionPackets = 1'750'000;
    const MIDIData clip(largeClip(largeFile(bytesOfAMillionPackets, tracks, Density::song)));
    const std::size_t size = clip.size();
    std::printf("\nclip of %llu packets, %zu bytes, %d rounds\n",
                static_cast<unsigned long long>(barePass(clip).packets), size, rounds);
    return runInterleaved(
        {{"plain pass over the words", size, [clip] { keep(barePass(clip)); }},
         {"import", size, [clip] { keep(MIDI2ClipImporter::importPlayableSMF(clip)); }, 0.2}},
        rounds);
}

} // namespace
} // namespace tambrel::bench

// tambrel_bench [MEGABYTES [TRACKS [ROUNDS]]]; without arguments the usual two sizes. Measures a song and a
// crowd, and the import of a clip. Fails when a wanted ratio is missed.
int main(int argc, char** argv) {
    using namespace tambrel::bench;
    const auto argument = [&](int i, int otherwise) {
        return argc > i ? std::max(std::atoi(argv[i]), 1) : otherwise;
    };
    const int tracks = argument(2, 17);
    const int rounds = argument(3, 31);
    const std::vector<int> sizes = argc > 1 ? std::vector{argument(1, 20)} : std::vector{1, 20};
    bool reached = true;
    for (const int megabytes : sizes) {
        for (const Density density : {Density::song, Density::crowd})
            reached &= measure(static_cast<std::size_t>(megabytes), tracks, rounds, density);
    }
    reached &= measureImport(tracks, rounds);
    return reached ? EXIT_SUCCESS : EXIT_FAILURE;
}
