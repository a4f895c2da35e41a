#include "StallWatch.h"
#include "TambrelBetaLog.h"
#include "TambrelDebugWindowController.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <utility>

namespace tambrel::bench {
namespace {

constexpr int windowLines = 100'000;
constexpr qsizetype logSize = 100'000'000;

double processorNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return 1e9 * static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec);
}

/// Processor time of this thread for one of so many calls.
template<class Call>
double nanosecondsEach(int calls, Call call) {
    const double start = processorNanoseconds();
    for (int i = 0; i < calls; ++i)
        call();
    return (processorNanoseconds() - start) / calls;
}

void print(const char* what, double milliseconds, double stall) {
    std::printf("%-36s %9.1f ms, longest stall %7.1f ms, memory %5.0f MB, peak %5.0f MB\n", what,
                milliseconds, stall, megabytes("VmRSS"), megabytes("VmHWM"));
    std::fflush(stdout);
    forgetPeakMemory();
}

/// A log whose reports go nowhere.
class Bench {
public:
    explicit Bench(bool isEnabled) {
        log.configure({.info = {.identifier = "software.kestrune.tambrel", .diagnosticsSwitch = isEnabled},
                       .settings = settings_,
                       .ask = {},
                       .composeEmail = [this](const EmailDraft&, const std::function<void()>&) { ++emails; },
                       .openLink = [this](const QUrl&) { ++emails; },
                       .makeDebugWindow =
                           [this](TambrelBetaLog& owner) {
                               auto made = std::make_unique<TambrelDebugWindowController>(owner);
                               window = made.get();
                               return made;
                           },
                       .folder = folder_.path()});
    }
    ~Bench() { log.close(); }
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    void fillFile() {
        settings_.setValue(TambrelBetaLog::fileLoggingEnabledKey, true);
        QFile file(folder_.filePath("Tambrel-beta-log.txt"));
        if (!file.open(QIODevice::WriteOnly))
            return;
        const QByteArray line("[Nov 14, 2026, 10:13:20 PM] An entry of usual length, läuft | A.b(data:)\n");
        for (qsizetype written = 0; written < logSize; written += line.size())
            file.write(line);
    }

    /// Makes entries while the event loop runs, as the program does. Returns the milliseconds of processor
    /// time that one entry costs this thread, with all that follows from it.
    double measureEntries(const char* what, int count) {
        static_cast<void>(watch.longest());
        double entries = 0;
        double consequences = 0;
        for (int i = 0; i < count; ++i) {
            entries += nanosecondsEach(1, [&] { log.userAction("Clicked Play/Pause button", "A.b"); });
            consequences += nanosecondsEach(1, [] { QCoreApplication::processEvents(); });
        }
        std::printf("%-36s %9.1f us each on the main thread\n", what, entries / count / 1e3);
        print("  with what they cause", (entries + consequences) / 1e6, watch.longest());
        return (entries + consequences) / count / 1e6;
    }

    /// Until the report is with the mail program.
    template<class Start>
    void measureReport(const char* what, Start start) {
        static_cast<void>(watch.longest());
        emails = 0;
        QElapsedTimer elapsed;
        elapsed.start();
        start();
        watch.run([this] { return emails > 0; });
        print(what, static_cast<double>(elapsed.nsecsElapsed()) / 1e6, watch.longest());
    }

    TambrelBetaLog log;
    TambrelDebugWindowController* window = nullptr;
    StallWatch watch;
    int emails = 0;

private:
    QTemporaryDir folder_;
    QSettings settings_{folder_.filePath("settings.ini"), QSettings::IniFormat};
};

bool measureDisabled() {
    constexpr double mostNanoseconds = 20;
    Bench bench(false);
    int number = 0;
    const double each = nanosecondsEach(20'000'000, [&] {
        asm volatile("" : "+m"(bench.log) : : "memory"); // Each call has to test the switch.
        bench.log.procedure("A.b", [&] { return "Composed " + std::to_string(++number); });
    });
    const bool isReached = each <= mostNanoseconds && number == 0;
    std::printf("log call with diagnostics off %7.2f ns   at most %.0f: %s\n", each, mostNanoseconds,
                isReached ? "yes" : "NO");
    return isReached;
}

bool measureEnabled() {
    constexpr double audioPeriod = 21; // Milliseconds.
    Bench bench(true);
    bench.measureEntries("no window, no file", 1000);
    bench.log.showDebugWindow();
    bench.measureEntries("window only", 1000);
    bench.window->window().close();
    const double each = nanosecondsEach(windowLines, [&] {
        bench.window->append("[Nov 14, 2026, 10:13:20 PM] An entry of usual length, läuft | A.b(data:)\n");
    });
    std::printf("%d entries, window hidden %12.1f us each\n", windowLines, each / 1e3);
    QCoreApplication::processEvents();
    print("100,000 entries", 0, bench.watch.longest());

    QElapsedTimer elapsed;
    elapsed.start();
    bench.log.showDebugWindow();
    QCoreApplication::processEvents();
    print("window shown with them", static_cast<double>(elapsed.nsecsElapsed()) / 1e6, bench.watch.longest());
    const double entry = bench.measureEntries("entries into the shown window", 1000);
    const bool isReached = entry <= audioPeriod;
    std::printf("entry with %d lines shown %9.2f ms   at most %.0f: %s\n", windowLines, entry, audioPeriod,
                isReached ? "yes" : "NO");
    elapsed.start();
    bench.window->window().resize(900, 600);
    QCoreApplication::processEvents();
    print("window resized", static_cast<double>(elapsed.nsecsElapsed()) / 1e6, bench.watch.longest());
    bench.measureReport("Email Window Text", [&] { bench.log.emailDebugWindowText(bench.window->text()); });

    bench.fillFile();
    bench.measureEntries("window and a file of 100 MB", 1000);
    bench.measureReport("complete report of it", [&] { bench.log.emailCompleteBugReport(); });
    return isReached;
}

} // namespace
} // namespace tambrel::bench

// Fails when a log call costs too much while diagnostics are off, or with a long window.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", qEnvironmentVariable("QT_QPA_PLATFORM", "offscreen").toLocal8Bit());
    const QApplication application(argc, argv);
    const bool isCheapWhenOff = tambrel::bench::measureDisabled();
    const bool isQuickWhenOn = tambrel::bench::measureEnabled();
    return isCheapWhenOff && isQuickWhenOn ? EXIT_SUCCESS : EXIT_FAILURE;
}
