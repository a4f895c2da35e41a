#include "Commands.h"
#include "ProgressBar.h"

#include "MIDILoudnessProcessor.h"
#include "OfflineRenderer.h"
#include "SoundBank.h"
#include "TambrelFileLoader.h"
#include "TambrelLoadError.h"

#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <stop_token>

namespace tambrel::cli {
namespace {

// A signal handler can do no more than set a flag; the rendering asks for it between two steps.
volatile std::sig_atomic_t interruption = 0;

void rememberInterruption(int signal) {
    interruption = signal;
}

// Relative to full scale.
double decibels(double amplitude) {
    return 20 * std::log10(amplitude);
}

} // namespace

ExitStatus runRender(const RenderCommandOptions& options) {
    std::stop_source stop;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, rememberInterruption);
    try {
        const MIDIData loaded = TambrelFileLoader::load(options.input).playbackData;
        const MIDIData song = options.loudness ? MIDILoudnessProcessor::boostedDrumsAndBass(loaded) : loaded;
        const auto bank = findSoundBank(options.soundFont);
        ProgressBar bar(options.output.filename().string());
        const auto result = renderToWAV(song, options.output,
                                        {.soundBank = bank,
                                         .sampleRate = options.sampleRate,
                                         .onProgress =
                                             [&](double part) {
                                                 bar.show(part);
                                                 if (interruption != 0)
                                                     stop.request_stop();
                                             },
                                         .stop = stop.get_token()});
        if (result.wasStopped) {
            complain(options.output, "Interrupted; no file was written.");
            return aFileFailed;
        }
        std::printf("%s: %.2f s, peak %.2f dBFS, RMS %.2f dBFS\n", options.output.c_str(), result.seconds,
                    decibels(result.peak), decibels(result.rms));
        return allWell;
    } catch (const RenderError& error) {
        complain(options.output, error.what());
    } catch (const std::exception& error) {
        complain(options.input, error.what());
    }
    return aFileFailed;
}

} // namespace tambrel::cli
