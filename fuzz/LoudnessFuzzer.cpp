#include "Check.h"
#include "MIDILoudnessProcessor.h"
#include "SMFTrackEventWalker.h"

#include <algorithm>

using namespace tambrel;
using fuzz::check;

// Only velocities change, all to 127, and a second pass changes nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const MIDIData original(Bytes(bytes, bytes + size));
    const MIDIData loud = MIDILoudnessProcessor::boostedDrumsAndBass(original);
    check(loud.size() == size);
    Bytes expected(bytes, bytes + size);
    for (const SMFTrackChunk& track : SMFTrackEventWalker::trackChunks(original, 65535)) {
        SMFTrackEventWalker::walk(original, track, SMFMalformedEventPolicy::stop, [&](const auto& event) {
            const std::size_t velocity = event.dataStart + 1;
            if (MIDIStatus::kind(event.status) == MIDIStatus::noteOn && bytes[velocity] != 0 &&
                loud.view()[velocity] == 127)
                expected[velocity] = 127;
            return SMFTrackWalkDecision::continue_;
        });
    }
    check(std::ranges::equal(loud.view(), expected));
    check(std::ranges::equal(MIDILoudnessProcessor::boostedDrumsAndBass(loud).view(), expected));
    return 0;
}
