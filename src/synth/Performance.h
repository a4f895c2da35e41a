#pragma once

#include "MasterStage.h"
#include "RingOut.h"
#include "Sequencer.h"
#include "SynthesizerFactory.h"
#include "Timeline.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace tambrel {

struct RenderOptions;

/// One playing of a song, or of a part of it, block by block and faster than real time. One thread at a time.
class Performance {
public:
    static constexpr int framesPerBlock = 1024;

    /// Positions are valid until the next block.
    struct Block {
        std::size_t frames;
        const float* left;
        const float* right;
    };

    /// Throws SoundBankError.
    Performance(const std::shared_ptr<const Timeline>& song, const RenderOptions& options);

    /// The next block; none once the part and what it leaves ringing are over.
    [[nodiscard]] std::optional<Block> next();
    /// What was wrong with banks that would have been preferred; empty if nothing.
    [[nodiscard]] const std::string& complaints() const { return loaded_.complaints; }
    /// Of the part asked for, 0 to 1.
    [[nodiscard]] double partDone() const;

private:
    [[nodiscard]] Block mastered(int frames);
    [[nodiscard]] int renderSong();
    [[nodiscard]] int renderTail();

    const BankedSynthesizer loaded_;
    Synthesizer& synthesizer_;
    Sequencer sequencer_;
    MasterStage master_;
    int early_ = master_.latency();   // Frames of silence that still come out before the song.
    int pending_ = master_.latency(); // Frames that are still in the master stage when the song is over.
    RingOut ringOut_;
    int rate_;
    std::int64_t partFrames_;
    // Where the song is left though it might go on, and what follows; absent when it ends by itself.
    std::optional<std::int64_t> cut_;
    std::optional<std::int64_t> tailFrames_;
    std::int64_t frame_ = 0;
    bool isOver_ = false;
    std::array<float, framesPerBlock> left_{};
    std::array<float, framesPerBlock> right_{};
};

} // namespace tambrel
