#pragma once

#include "RecordingWindow.h"

#include <QCoreApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <string>
#include <utility>
#include <vector>

namespace tambrel {

/// A log that keeps its entries, without their time stamps and newlines.
class RecordedLog {
public:
    explicit RecordedLog(bool diagnosticsEnabled = true) {
        log.configure({.info = {.diagnosticsSwitch = diagnosticsEnabled},
                       .settings = settings_,
                       .ask = [](const ModalQuestion&) { return false; },
                       .makeDebugWindow = RecordingWindow::maker([this](const std::string& line) {
                           const auto start = line.find("] ") + 2;
                           entries_.push_back(line.substr(start, line.size() - start - 1));
                       }),
                       .folder = home_.path()});
        log.showDebugWindow();
        entries_.clear();
    }

    /// What has been logged since the last call, by now and not later.
    [[nodiscard]] std::vector<std::string> taken() { return std::exchange(entries_, {}); }

    /// The same, once the events that are due have been handled.
    [[nodiscard]] std::vector<std::string> settled() {
        QCoreApplication::processEvents();
        return taken();
    }

    TambrelBetaLog log;

private:
    QTemporaryDir home_;
    QSettings settings_{home_.filePath("settings.ini"), QSettings::IniFormat};
    std::vector<std::string> entries_;
};

} // namespace tambrel
