#include "OfflineRenderer.h"

#include "NewFile.h"
#include "Sequencer.h"
#include "Timeline.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

namespace tambrel {
namespace {

constexpr int channels = 2;
constexpr int framesPerStep = 1024;

/// A WAV file in the making.
class SoundFile {
public:
    SoundFile(const std::filesystem::path& wanted, double sampleRate) : file_(wanted) {
        SF_INFO info{};
        info.samplerate = static_cast<int>(std::lround(sampleRate));
        info.channels = channels;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        sound_ = sf_open_fd(file_.descriptor(), SFM_WRITE, &info, SF_FALSE);
        if (sound_ == nullptr)
            throw RenderError(sf_strerror(nullptr));
        sf_command(sound_, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    }

    ~SoundFile() {
        if (sound_ != nullptr)
            sf_close(sound_);
    }
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    void write(const float* interleaved, int frames) {
        if (sf_writef_float(sound_, interleaved, frames) != frames)
            throw RenderError(sf_strerror(sound_));
    }

    void keep() {
        if (const int error = sf_close(std::exchange(sound_, nullptr)); error != 0)
            throw RenderError(sf_error_number(error));
        file_.keep(NewFile::Existing::replace);
    }

private:
    NewFile file_;
    SNDFILE* sound_ = nullptr;
};

/// Measures and interleaves what has been rendered.
class Meter {
public:
    const float* take(const float* left, const float* right, int frames) {
        for (int frame = 0; frame < frames; ++frame) {
            const auto at = static_cast<std::size_t>(frame) * channels;
            interleaved_[at] = left[frame];
            interleaved_[at + 1] = right[frame];
            peak_ = std::max({peak_, std::abs(left[frame]), std::abs(right[frame])});
            sumOfSquares_ += double{left[frame]} * left[frame] + double{right[frame]} * right[frame];
        }
        frames_ += frames;
        return interleaved_.data();
    }

    [[nodiscard]] RenderResult result(double sampleRate) const {
        const auto samples = static_cast<double>(frames_ * channels);
        return {.seconds = static_cast<double>(frames_) / sampleRate,
                .peak = peak_,
                .rms = frames_ == 0 ? 0 : std::sqrt(sumOfSquares_ / samples)};
    }

private:
    std::array<float, std::size_t{framesPerStep} * channels> interleaved_{};
    std::int64_t frames_ = 0;
    double sumOfSquares_ = 0;
    float peak_ = 0;
};

RenderResult render(const std::shared_ptr<const Timeline>& timeline, const std::filesystem::path& output,
                    const RenderOptions& options) {
    SoundFile file(output, options.sampleRate);
    Synthesizer synthesizer(options.sampleRate);
    synthesizer.loadSoundBank(options.soundBank);
    Sequencer sequencer(options.sampleRate);
    sequencer.setSynthesizer(synthesizer);
    sequencer.play(timeline, 0);

    Meter meter;
    std::array<float, framesPerStep> left{};
    std::array<float, framesPerStep> right{};
    do {
        sequencer.renderAudio(left.data(), right.data(), framesPerStep);
        file.write(meter.take(left.data(), right.data(), framesPerStep), framesPerStep);
        if (options.onProgress && timeline->duration() > 0)
            options.onProgress(sequencer.position() / timeline->duration());
    } while (!sequencer.isSilent() && !options.stop.stop_requested());

    RenderResult result = meter.result(options.sampleRate);
    result.wasStopped = options.stop.stop_requested();
    if (!result.wasStopped)
        file.keep();
    return result;
}

} // namespace

RenderResult renderToWAV(ByteView song, const std::filesystem::path& output, const RenderOptions& options) {
    try {
        return render(Timeline::build(song, options.stop), output, options);
    } catch (const TimelineCancelled&) {
        return {.wasStopped = true};
    } catch (const std::system_error& error) {
        throw RenderError(error.code().message());
    }
}

} // namespace tambrel
