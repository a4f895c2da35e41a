#include "AudioDrivers.h"
#include "BareWalk.h"
#include "GeneralMIDIEngine.h"
#include "InterleavedRun.h"
#include "LargeFile.h"
#include "MainWindow.h"
#include "StallWatch.h"
#include "TambrelBetaLog.h"
#include "Timeline.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tambrel::bench {
namespace {

// Milliseconds. At the end, a sound bank is freed, whatever the song.
constexpr double longestStall = 50;
constexpr double longestQuit = 500;

/// The real window on the real player, without a display or a loudspeaker.
class Window {
public:
    explicit Window(TambrelBetaLog& log)
        : controller_(new MainViewController(
              {.makePlayer = [this](const PlayableSong& song) { return engine_.makePlayer(song); },
               .buildTimeline = Timeline::build,
               .beep = [] {},
               .chooseFile = [](const auto&) { return std::nullopt; },
               .loadFinished = [this](const std::string& failure) { finish(failure); }},
              log)),
          window_(controller_) {
        window_.show();
    }

    MainViewController& controller() { return *controller_; }
    bool isLoadingSoundBank() const { return engine_.isLoadingSoundBank(); }

    /// Loads a file to its end.
    void load(StallWatch& watch, const std::filesystem::path& file) {
        finished_ = 0;
        controller_->load(file);
        watch.run([this] { return finished_ > 0; });
    }
    void play(StallWatch& watch) {
        controller_->playPause();
        watch.run([this] { return controller_->player().position() > 0; });
    }

private:
    void finish(const std::string& failure) {
        ++finished_;
        if (!failure.empty())
            std::fprintf(stderr, "%s\n", failure.c_str());
    }

    int finished_ = 0;
    GeneralMIDIEngine engine_{{.soundBank = {}, .audioDrivers = {std::string(silentDriverName)}}};
    MainViewController* controller_;
    MainWindow window_;
};

double millisecondsOf(const std::function<void()>& act) {
    QElapsedTimer elapsed;
    elapsed.start();
    act();
    return static_cast<double>(elapsed.nsecsElapsed()) / 1e6;
}

void rest(StallWatch& watch, int milliseconds) {
    QElapsedTimer elapsed;
    elapsed.start();
    watch.run([&] { return elapsed.elapsed() > milliseconds; });
}

/// What was measured, the best of all rounds: other work of the machine only makes it worse.
class Results {
public:
    void take(const std::string& what, double value) {
        const auto [known, isNew] = best_.try_emplace(what, value);
        if (isNew)
            order_.push_back(what);
        else
            known->second = std::min(known->second, value);
    }

    /// Prints all; false when one is above its limit.
    [[nodiscard]] bool report(const std::map<std::string, double>& limits) const {
        bool holds = true;
        for (const auto& what : order_) {
            const double value = best_.at(what);
            const auto limit = limits.find(what);
            std::printf("%-52s %9.1f", what.c_str(), value);
            if (limit != limits.end()) {
                holds &= value <= limit->second;
                std::printf("   at most %6.1f: %s", limit->second, value <= limit->second ? "yes" : "NO");
            }
            std::printf("\n");
        }
        return holds;
    }

private:
    std::map<std::string, double> best_;
    std::vector<std::string> order_;
};

/// One life of the program with one large file.
class Round {
public:
    Round(Results& results, const std::filesystem::path& large, const std::filesystem::path& small,
          double walk)
        : results_(results), large_(large), small_(small), walk_(walk) {}

    void run() {
        TambrelBetaLog log; // Off.
        window_ = std::make_unique<Window>(log);
        window_->load(watch_, small_);
        watch_.run([this] { return !window_->isLoadingSoundBank(); });
        rest(watch_, 500);
        malloc_trim(0);
        before_ = megabytes("VmRSS");
        const double time = step("load", [this] { window_->load(watch_, large_); });
        results_.take("load: bare walks", time / walk_);
        step("play", [this] { window_->play(watch_); });
        step("clear", [this] { clear(); });
        waitForMemory();
        window_->load(watch_, large_);
        step("Loudness and Play", [this] {
            window_->controller().toggleLoudness();
            window_->play(watch_);
        });
        step("clear with Loudness", [this] { clear(); });
        waitForMemory();
        window_->load(watch_, large_);
        window_->play(watch_);
        results_.take("quit: stall, ms", millisecondsOf([this] {
                          window_->controller().fallSilent();
                          window_.reset();
                      }));
    }

private:
    double step(const std::string& what, const std::function<void()>& act) {
        static_cast<void>(watch_.longest());
        forgetPeakMemory();
        const double time = millisecondsOf(act);
        results_.take(what + ": stall, ms", watch_.longest());
        results_.take(what + ": peak above an idle window, MB", megabytes("VmHWM") - before_);
        static_cast<void>(watch_.longest()); // To read the memory figures may have taken long in itself.
        return time;
    }

    void clear() {
        window_->controller().clearLoadedMIDI();
        rest(watch_, 300);
    }

    // To read the memory figures stalls in itself while much is freed.
    void waitForMemory() {
        watch_.run([this] { return megabytes("VmRSS") < before_ + 50; });
    }

    Results& results_;
    const std::filesystem::path& large_;
    const std::filesystem::path& small_;
    double walk_;
    double before_ = 0;
    StallWatch watch_;
    std::unique_ptr<Window> window_;
};

std::filesystem::path write(const QTemporaryDir& folder, const char* name, const Bytes& bytes) {
    auto path = std::filesystem::path(folder.path().toStdString()) / name;
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path;
}

bool measure(int size, int tracks, int rounds) {
    const QTemporaryDir folder;
    const auto small = write(folder, "small.mid", largeFile(100'000, 17, Density::song));
    std::filesystem::path large;
    double walk = std::numeric_limits<double>::max();
    {
        const Bytes bytes = largeFile(static_cast<std::size_t>(size) * 1'000'000, tracks, Density::song);
        large = write(folder, "large.mid", bytes);
        for (int round = 0; round < 3; ++round)
            walk = std::min(walk, millisecondsOf([&] { keep(bareWalk(bytes)); }));
    }
    Results results;
    for (int round = 0; round < rounds; ++round)
        Round(results, large, small, walk).run();
    std::printf("\n%d MB, %d tracks, best of %d rounds; a bare walk takes %.1f ms\n", size, tracks, rounds,
                walk);
    std::map<std::string, double> limits;
    for (const char* what : {"load", "play", "clear", "Loudness and Play", "clear with Loudness"})
        limits[std::string(what) + ": stall, ms"] = longestStall;
    limits["quit: stall, ms"] = longestQuit;
    if (size >= 100) { // Below, the start of threads counts for much.
        limits["load: bare walks"] = 5.5;
        limits["load: peak above an idle window, MB"] = 5.5 * size;
        limits["Loudness and Play: peak above an idle window, MB"] = 8.0 * size;
    }
    return results.report(limits);
}

} // namespace
} // namespace tambrel::bench

// tambrel_stall_bench [MEGABYTES [TRACKS [ROUNDS]]]: whether the window answers while a large file comes,
// plays and goes, and what that takes. Without arguments the usual two sizes. Fails when a limit is passed.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const auto argument = [&](int i, int otherwise) {
        return argc > i ? std::max(std::atoi(argv[i]), 1) : otherwise;
    };
    bool holds = true;
    for (const int size : argc > 1 ? std::vector{argument(1, 24)} : std::vector{24, 200})
        holds &= tambrel::bench::measure(size, std::max(argument(2, 17), 2), argument(3, 3));
    return holds ? EXIT_SUCCESS : EXIT_FAILURE;
}
