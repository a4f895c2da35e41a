#pragma once

#include "MIDI2ClipBuilder.h"
#include "SMFTrackMerger.h"

#include <cstdint>
#include <span>
#include <stop_token>
#include <utility>

namespace tambrel::MIDI2ClipBuilder {

/// Merges the tracks of a song for a clip, as `SMFTrackMerger::merge` does; `trackCount` is the declared one.
/// Throws MIDI2ClipBuildCancelled once `stop` asks. Any thread.
template<class Event, class Select, class Emit>
std::uint32_t mergeTracks(ByteView smf, std::size_t trackCount, SMFMalformedEventPolicy policy,
                          const std::stop_token& stop, Select select, Emit emit) {
    return SMFTrackMerger::merge<Event>(smf, SMFTrackEventWalker::trackChunks(smf, trackCount), policy,
                                        std::move(select), [&stop, &emit](std::span<const Event> events) {
                                            if (stop.stop_requested())
                                                throw MIDI2ClipBuildCancelled();
                                            emit(events);
                                        });
}

} // namespace tambrel::MIDI2ClipBuilder
