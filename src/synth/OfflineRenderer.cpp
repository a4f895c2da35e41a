#include "OfflineRenderer.h"

#include "LoudnessMeter.h"
#include "NewFile.h"
#include "Performance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sys/statvfs.h>
#include <system_error>
#include <vector>

namespace tambrel {
namespace {

constexpr int channels = SoundFileWriter::channels;

/// Interleaves and measures what has been rendered.
class Meter {
public:
    std::span<const float> take(const Performance::Block& block, double gain) {
        for (std::size_t frame = 0; frame < block.frames; ++frame) {
            const auto left = static_cast<float>(block.left[frame] * gain);
            const auto right = static_cast<float>(block.right[frame] * gain);
            interleaved_[frame * channels] = left;
            interleaved_[frame * channels + 1] = right;
            peak_ = std::max({peak_, std::abs(left), std::abs(right)});
            sumOfSquares_ += double{left} * left + double{right} * right;
        }
        frames_ += block.frames;
        return std::span(interleaved_).first(block.frames * channels);
    }

    [[nodiscard]] RenderResult result(int rate) const {
        const auto frames = static_cast<double>(frames_);
        return {.seconds = frames / rate,
                .peak = peak_,
                .rms = frames_ == 0 ? 0 : std::sqrt(sumOfSquares_ / (frames * channels))};
    }

private:
    std::array<float, std::size_t{Performance::framesPerBlock} * channels> interleaved_{};
    std::size_t frames_ = 0;
    double sumOfSquares_ = 0;
    float peak_ = 0;
};

/// Hands out the blocks of a rendering; `from` and `to` are the parts of the whole job done. False when it
/// was stopped.
template<class OnBlock>
bool perform(Performance& performance, const RenderOptions& options, double from, double to,
             OnBlock onBlock) {
    while (const auto block = performance.next()) {
        if (options.stop.stop_requested())
            return false;
        onBlock(*block);
        if (options.onProgress)
            options.onProgress(from + (to - from) * performance.partDone());
    }
    return !options.stop.stop_requested();
}

// The factor that brings the sound to the loudness asked for; absent when the rendering was stopped.
std::optional<double> normalizingGain(const std::shared_ptr<const Timeline>& song,
                                      const RenderOptions& options) {
    if (!options.loudness)
        return 1;
    Performance performance(song, options);
    LoudnessMeter loudness(options.format.rate);
    Meter interleaving;
    if (!perform(performance, options, 0, 0.5,
                 [&](const auto& block) { loudness.add(interleaving.take(block, 1)); }))
        return std::nullopt;
    return loudness.gainTo(*options.loudness);
}

void requireSpace(int descriptor, const Timeline& song, const RenderOptions& options) {
    struct statvfs system {};
    const auto bytesPerFrame = options.format.bytesPerFrame();
    if (!bytesPerFrame || fstatvfs(descriptor, &system) != 0)
        return;
    const double needed = static_cast<double>(expectedFrames(song, options)) * *bytesPerFrame;
    const double free = static_cast<double>(system.f_bavail) * static_cast<double>(system.f_frsize);
    if (needed <= free)
        return;
    std::array<char, 120> text{};
    std::snprintf(text.data(), text.size(), "No space: the sound takes %.1f MB, of which %.1f MB are free.",
                  needed / 1e6, free / 1e6);
    throw RenderError(text.data());
}

} // namespace

std::int64_t expectedFrames(const Timeline& song, const RenderOptions& options) {
    const double end = std::min(options.end.value_or(song.duration()), song.duration());
    return std::llround((std::max(end - options.start, 0.0) + options.tail.value_or(0)) *
                        options.format.rate);
}

RenderResult renderTo(int descriptor, const std::shared_ptr<const Timeline>& song,
                      const RenderOptions& options) {
    constexpr std::int64_t longestRinging = 11; // Seconds; may be part of the file.
    SoundFileWriter file(descriptor, options.format,
                         expectedFrames(*song, options) + longestRinging * options.format.rate);
    const auto normalizing = normalizingGain(song, options);
    if (!normalizing)
        return {.wasStopped = true};
    Performance performance(song, options);
    Meter meter;
    const double gain = *normalizing * options.gain;
    const bool isWhole = perform(performance, options, options.loudness ? 0.5 : 0, 1,
                                 [&](const auto& block) { file.write(meter.take(block, gain)); });
    if (isWhole)
        file.finish();
    RenderResult result = meter.result(options.format.rate);
    result.wasStopped = !isWhole;
    result.complaints = performance.complaints();
    return result;
}

RenderResult renderToFile(const std::filesystem::path& output, const std::shared_ptr<const Timeline>& song,
                          const RenderOptions& options, bool replaceExisting) {
    try {
        NewFile file(output);
        requireSpace(file.descriptor(), *song, options);
        RenderResult result = renderTo(file.descriptor(), song, options);
        if (!result.wasStopped)
            file.keep(replaceExisting ? NewFile::Existing::replace : NewFile::Existing::keep);
        return result;
    } catch (const std::system_error& error) {
        throw RenderError(error.code().message());
    }
}

} // namespace tambrel
