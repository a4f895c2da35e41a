#include "Performance.h"

#include "OfflineRenderer.h"
#include "SynthesizerFactory.h"

#include <algorithm>
#include <cmath>

namespace tambrel {

Performance::Performance(const std::shared_ptr<const Timeline>& song, const RenderOptions& options)
    : loaded_(loadSynthesizer(options.format.rate, options.soundBanks, options.synthesizer)),
      synthesizer_(*loaded_.synthesizer),
      sequencer_(options.format.rate),
      master_(options.format.rate),
      ringOut_(options.format.rate),
      rate_(options.format.rate),
      partFrames_(expectedFrames(*song, options)) {
    sequencer_.setSynthesizer(synthesizer_);
    sequencer_.play(song, options.start);
    if (options.tail)
        tailFrames_ = std::llround(*options.tail * rate_);
    if (options.tail || options.end.value_or(song->duration()) < song->duration())
        cut_ = partFrames_ - tailFrames_.value_or(0);
}

std::optional<Performance::Block> Performance::next() {
    if (!isOver_) {
        const int frames = cut_ && frame_ >= *cut_ ? renderTail() : renderSong();
        frame_ += frames;
        isOver_ = isOver_ || frames == 0;
        if (frames != 0)
            return mastered(frames);
    }
    const int frames = std::min(pending_, framesPerBlock);
    if (frames == 0)
        return std::nullopt;
    pending_ -= frames;
    left_ = {};
    right_ = {};
    return mastered(frames);
}

Performance::Block Performance::mastered(int frames) {
    master_.process(left_.data(), right_.data(), frames);
    const auto early = static_cast<std::size_t>(std::min(early_, frames));
    early_ -= static_cast<int>(early);
    return {static_cast<std::size_t>(frames) - early, left_.data() + early, right_.data() + early};
}

double Performance::partDone() const {
    return partFrames_ == 0 ? 1
                            : std::min(static_cast<double>(frame_) / static_cast<double>(partFrames_), 1.0);
}

int Performance::renderSong() {
    const int frames =
        cut_ ? static_cast<int>(std::min<std::int64_t>(framesPerBlock, *cut_ - frame_)) : framesPerBlock;
    sequencer_.renderAudio(left_.data(), right_.data(), frames);
    isOver_ = !cut_ && sequencer_.isSilent();
    return frames;
}

// The part ends here: releases the notes.
int Performance::renderTail() {
    const std::int64_t done = frame_ - *cut_;
    if (done == 0)
        synthesizer_.releaseNotes();
    const auto frames = static_cast<int>(std::min<std::int64_t>(
        framesPerBlock, tailFrames_ ? *tailFrames_ - done : std::int64_t{framesPerBlock}));
    synthesizer_.render(left_.data(), right_.data(), frames);
    isOver_ =
        !tailFrames_ && ringOut_.isOver(left_.data(), right_.data(), frames, synthesizer_.activeVoices());
    return frames;
}

} // namespace tambrel
