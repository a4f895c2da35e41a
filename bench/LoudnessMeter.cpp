// Integrated loudness (EBU R 128) and true peak of sound files: one line a file, "LUFS dBTP name".

#include <ebur128.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

bool measure(const char* name) {
    SF_INFO info{};
    SNDFILE* file = sf_open(name, SFM_READ, &info);
    if (file == nullptr) {
        std::fprintf(stderr, "%s: %s\n", name, sf_strerror(nullptr));
        return false;
    }
    const auto channels = static_cast<unsigned>(info.channels);
    ebur128_state* meter = ebur128_init(channels, static_cast<unsigned long>(info.samplerate),
                                        EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK);
    std::vector<float> frames(std::size_t{65536} * channels);
    while (const auto read = sf_readf_float(file, frames.data(), 65536))
        ebur128_add_frames_float(meter, frames.data(), static_cast<std::size_t>(read));
    double loudness = 0, peak = 0;
    ebur128_loudness_global(meter, &loudness);
    for (unsigned channel = 0; channel < channels; ++channel) {
        double ofChannel = 0;
        ebur128_true_peak(meter, channel, &ofChannel);
        peak = std::max(peak, ofChannel);
    }
    std::printf("%7.2f %7.2f %s\n", loudness, 20 * std::log10(peak), name);
    ebur128_destroy(&meter);
    sf_close(file);
    return true;
}

} // namespace

int main(int count, char** arguments) {
    bool isWhole = true;
    for (int argument = 1; argument < count; ++argument)
        isWhole = measure(arguments[argument]) && isWhole;
    return isWhole ? 0 : 1;
}
