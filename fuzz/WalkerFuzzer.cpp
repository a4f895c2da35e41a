#include "Check.h"
#include "SMFHeader.h"
#include "SMFTrackEventWalker.h"

using namespace tambrel;
using fuzz::check;

// Chunks follow one another inside the file, events inside their chunk, and time never runs backwards.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ByteView data(bytes, size);
    std::size_t chunkEnd = SMFHeader::size;
    for (const SMFTrackChunk& track : SMFTrackEventWalker::trackChunks(data, 65535)) {
        check(track.headerOffset == chunkEnd && track.dataStart == track.headerOffset + 8);
        check(track.dataEnd == track.dataStart + track.length && track.dataEnd <= size);
        chunkEnd = track.dataEnd;
        for (const auto policy : {SMFMalformedEventPolicy::stop, SMFMalformedEventPolicy::skip}) {
            SMFTimedTrackEvent last{.dataEnd = track.dataStart};
            SMFTrackEventWalker::walk(data, track, policy, [&](const SMFTimedTrackEvent& event) {
                check(event.tick >= last.tick && event.dataStart > last.dataEnd);
                check(event.dataStart <= event.dataEnd && event.dataEnd <= track.dataEnd);
                check(event.status >= 0x80 &&
                      (event.status <= 0xF0 || event.status == 0xF7 || event.status == 0xFF));
                last = event;
                return SMFTrackWalkDecision::continue_;
            });
        }
    }
    return 0;
}
