#include "GeneralMIDIEngine.h"
#include "LargeFile.h"
#include "MainWindow.h"
#include "StallWatch.h"
#include "TambrelBetaLog.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace tambrel::bench {
namespace {

/// The real window on the real player, with nobody to look or to listen.
class Window {
public:
    explicit Window(TambrelBetaLog& log)
        : controller_(new MainViewController(
              {.makePlayer = [this](const MIDIData& song) { return engine_.makePlayer(song); },
               .adoptSong =
                   [this](const LoadedSong& song) {
                       engine_.adoptTimeline(song.file.playbackData, song.timeline);
                   },
               .beep = [] {},
               .chooseFile = [] { return std::nullopt; },
               .loadFinished = [this](const std::string& failure) { finish(failure); }},
              log)),
          window_(controller_) {
        window_.show();
    }

    MainViewController& controller() { return *controller_; }
    StallWatch& watch() { return watch_; }
    bool isLoadingSoundBank() const { return engine_.isLoadingSoundBank(); }

    /// Loads a file to its end, which takes so many milliseconds.
    double load(const std::filesystem::path& file) {
        QElapsedTimer elapsed;
        elapsed.start();
        finished_ = 0;
        controller_->load(file);
        watch_.run([this] { return finished_ > 0; });
        return static_cast<double>(elapsed.nsecsElapsed()) / 1e6;
    }

    /// Runs the event loop for so long.
    void rest(int milliseconds) {
        QElapsedTimer elapsed;
        elapsed.start();
        watch_.run([&] { return elapsed.elapsed() > milliseconds; });
    }

    /// Waits until the memory in use is below `limit` megabytes; returns the milliseconds that it took.
    double waitForMemoryBelow(double limit) {
        QElapsedTimer elapsed;
        elapsed.start();
        const bool isBack = watch_.run([limit] { return megabytes("VmRSS") < limit; });
        return isBack ? static_cast<double>(elapsed.nsecsElapsed()) / 1e6 : -1;
    }

private:
    void finish(const std::string& failure) {
        ++finished_;
        if (!failure.empty())
            std::fprintf(stderr, "%s\n", failure.c_str());
    }

    int finished_ = 0;
    GeneralMIDIEngine engine_{{.soundBank = {}, .audioDrivers = {std::string(silentDriverName)}}};
    StallWatch watch_;
    MainViewController* controller_;
    MainWindow window_;
};

void print(const char* what, double milliseconds, double stall) {
    std::printf("%-34s %9.1f ms, longest stall %7.1f ms, memory %6.0f MB, peak %6.0f MB\n", what,
                milliseconds, stall, megabytes("VmRSS"), megabytes("VmHWM"));
    std::fflush(stdout);
    forgetPeakMemory();
}

std::filesystem::path write(const QTemporaryDir& folder, const char* name, std::size_t size, int tracks) {
    const auto path = std::filesystem::path(folder.path().toStdString()) / name;
    const Bytes bytes = largeFile(size, tracks, Density::song);
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path;
}

void measure(std::size_t size, int tracks) {
    const QTemporaryDir folder;
    const auto large = write(folder, "large.mid", size, tracks);
    const auto small = write(folder, "small.mid", 100'000, 17);
    TambrelBetaLog log; // Off.
    Window window(log);
    window.load(small);
    window.watch().run([&] { return !window.isLoadingSoundBank(); });
    window.rest(500);
    window.watch().longest();
    malloc_trim(0);
    const double before = megabytes("VmRSS");
    const double freed = before + 50;
    forgetPeakMemory();
    const auto report = [&](const std::string& what, double milliseconds) {
        print(what.c_str(), milliseconds, window.watch().longest());
        window.watch().longest(); // To ask for the memory may have taken long in itself.
    };
    const auto clear = [&] {
        QElapsedTimer elapsed;
        elapsed.start();
        window.controller().clearLoadedMIDI();
        return static_cast<double>(elapsed.nsecsElapsed()) / 1e6;
    };
    report("before", 0);

    double time = window.load(large);
    report("large file", time);
    time = window.load(small);
    report("small file after it", time);
    report("  until its memory is back", window.waitForMemoryBelow(freed));

    window.load(large);
    window.watch().longest();
    window.controller().playPause();
    window.rest(300);
    report("large file plays", 300);
    window.controller().seek(window.controller().player().duration() / 2);
    window.rest(300);
    report("large file plays from its middle", 300);
    time = clear();
    report("Clear while it plays", time);
    report("  until its memory is back", window.waitForMemoryBelow(freed));

    window.load(large);
    window.controller().toggleLoudness();
    window.watch().longest();
    window.controller().playPause();
    window.rest(300);
    report("large file plays with Loudness", 300);
    time = clear();
    report("Clear while it plays", time);
    report("  until its memory is back", window.waitForMemoryBelow(freed));

    for (const int head : {100, 300, 600, 1000}) {
        window.controller().load(large);
        window.rest(head);
        window.watch().longest();
        const std::string label = " " + std::to_string(head) + " ms into the load";
        time = window.load(small);
        report("small file" + label, time);
        report("  until its memory is back", window.waitForMemoryBelow(freed));
        window.controller().load(large);
        window.rest(head);
        window.watch().longest();
        time = clear();
        report("Clear" + label, time);
        report("  until its memory is back", window.waitForMemoryBelow(freed));
    }
}

} // namespace
} // namespace tambrel::bench

// tambrel_stall_bench [MEGABYTES [TRACKS]]: whether the window answers while a large file comes and goes.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const int size = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 200;
    const int tracks = argc > 2 ? std::max(std::atoi(argv[2]), 2) : 17;
    tambrel::bench::measure(static_cast<std::size_t>(size) * 1'000'000, tracks);
}
