#include "SystemProfiler.h"

#include "BugReportTexts.h"

#include <QByteArrayView>
#include <QDeadlineTimer>
#include <QProcess>
#include <QProcessEnvironment>

#include <algorithm>

namespace tambrel {
namespace {

struct Printed {
    std::string text = {};
    bool hasStarted = false;
    std::string launchError = {}; // Of a tool that has not started.
};

// QProcess cannot wait for a process and for a stop at once.
constexpr qint64 stopIsNoticedWithin = 20; // Milliseconds.

void waitOrEnd(QProcess& process, const QDeadlineTimer& deadline, const std::stop_token& stop) {
    while (!stop.stop_requested() && !deadline.hasExpired())
        if (process.waitForFinished(
                static_cast<int>(std::min(deadline.remainingTime(), stopIsNoticedWithin))) ||
            process.state() == QProcess::NotRunning)
            return;
    process.kill();
    process.waitForFinished();
}

Printed run(const ProfilerTool& tool, const QDeadlineTimer& deadline, const std::stop_token& stop) {
    QProcess process;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", "C.UTF-8");
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(tool.program, tool.arguments);
    if (!process.waitForStarted(static_cast<int>(deadline.remainingTime())))
        return {.launchError = process.errorString().toStdString()};
    waitOrEnd(process, deadline, stop);
    const QByteArray text = process.readAll();
    return {.text = text.isValidUtf8() ? text.toStdString() : std::string(), .hasStarted = true};
}

std::string withoutLines(const std::string& text, const QStringList& beginnings) {
    std::string kept;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
        const std::string_view line = std::string_view(text).substr(start, end - start);
        const bool isLeftOut = std::ranges::any_of(beginnings, [line](const QString& beginning) {
            return line.starts_with(beginning.toStdString());
        });
        if (!isLeftOut)
            kept += line;
        start = end;
    }
    return kept;
}

} // namespace

std::vector<ProfilerTool> standardProfilerTools() {
    const QString model = "/sys/class/dmi/id/";
    // -s: no complaint about files that this computer does not have.
    const auto files = [](const QStringList& paths) {
        return ProfilerTool{.program = "grep", .arguments = QStringList{"-hs", ""} + paths};
    };
    return {
        files({model + "sys_vendor", model + "product_name"}),
        {.program = "lscpu", .leftOut = {"Flags:", "Vulnerability "}},
        {.program = "free", .arguments = {"-h"}},
        files({"/proc/asound/cards"}),
        {.program = "uname", .arguments = {"-a"}},
        files({"/etc/os-release"}),
    };
}

std::string SystemProfiler::report() const {
    const QDeadlineTimer deadline(limit);
    std::string text;
    std::string launchError;
    bool hasAnyStarted = false;
    for (const ProfilerTool& tool : tools) {
        if (deadline.hasExpired() || stop.stop_requested())
            break;
        const Printed printed = run(tool, deadline, stop);
        text += withoutLines(printed.text, tool.leftOut);
        hasAnyStarted |= printed.hasStarted;
        if (launchError.empty())
            launchError = printed.launchError;
    }
    if (!isBlank(text))
        return text;
    const bool isUnavailable = !hasAnyStarted && !launchError.empty();
    return "system_profiler unavailable: " +
           (isUnavailable ? launchError : "system_profiler returned no text.") + '\n' + computer().report();
}

} // namespace tambrel
