// Compares the first second after a seek with the same second of the whole song, both as raw 32-bit float
// stereo:
//
//     SeekMeter WHOLE SOUGHT START RATE        START in frames
//
// Prints the level of the whole in dBFS, by how many dB the sought second is louder, and by how many dB that
// semitone is louder which has the most too much; only semitones within 20 dB of the loudest count.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <utility>
#include <vector>

namespace {

using Samples = std::vector<float>;
constexpr int firstKey = 36, keys = 60;
using Spectrum = std::array<double, keys>;

// Both channels in one.
Samples read(const char* file, long start, long frames) {
    Samples stereo(static_cast<std::size_t>(frames) * 2);
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(start * 2 * static_cast<long>(sizeof(float)));
    stream.read(reinterpret_cast<char*>(stereo.data()),
                static_cast<std::streamsize>(stereo.size() * sizeof(float)));
    Samples mono;
    for (std::size_t at = 0; at < stereo.size(); at += 2)
        mono.push_back((stereo[at] + stereo[at + 1]) / 2);
    return mono;
}

double decibels(double power) {
    return 10 * std::log10(power + 1e-12);
}

double level(const Samples& samples) {
    double squares = 0;
    for (const float sample : samples)
        squares += double{sample} * sample;
    return decibels(squares / static_cast<double>(samples.size()));
}

// Goertzel's filter over pieces of a tenth of a second under a Hann window.
double powerAt(const Samples& samples, double hertz, double rate) {
    const auto piece = static_cast<std::size_t>(rate / 10);
    const double step = 2 * std::numbers::pi * hertz / rate;
    double power = 0;
    for (std::size_t begin = 0; begin + piece <= samples.size(); begin += piece / 2) {
        double last = 0, before = 0;
        for (std::size_t at = 0; at < piece; ++at) {
            const double window = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(at) /
                                                       static_cast<double>(piece));
            const double next = samples[begin + at] * window + 2 * std::cos(step) * last - before;
            before = std::exchange(last, next);
        }
        power += last * last + before * before - 2 * std::cos(step) * last * before;
    }
    return power / static_cast<double>(piece * piece);
}

Spectrum spectrum(const Samples& samples, double rate) {
    Spectrum result{};
    for (int key = 0; key < keys; ++key)
        result[static_cast<std::size_t>(key)] =
            powerAt(samples, 440 * std::exp2((key + firstKey - 69) / 12.0), rate);
    return result;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5)
        return EXIT_FAILURE;
    const long start = std::atol(argv[3]), rate = std::atol(argv[4]);
    const Samples whole = read(argv[1], start, rate), sought = read(argv[2], 0, rate);
    const Spectrum one = spectrum(whole, static_cast<double>(rate)),
                   other = spectrum(sought, static_cast<double>(rate));
    const double loudest = std::max(*std::ranges::max_element(one), *std::ranges::max_element(other));
    double most = -100;
    for (std::size_t key = 0; key < keys; ++key) {
        if (other[key] > loudest / 100)
            most = std::max(most, decibels(other[key]) - decibels(one[key]));
    }
    std::printf("%.2f %.2f %.2f\n", level(whole), level(sought) - level(whole), most);
    return EXIT_SUCCESS;
}
