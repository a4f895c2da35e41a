#pragma once

#include "SongSession.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace tambrel {

/// What the desktop asks for before there is a window to do it, in order. Main thread.
class PendingRequests {
public:
    struct Files {
        std::vector<std::filesystem::path> paths;
        AfterLoad after = AfterLoad::wait; ///< Of the first of them, the only one that is opened.
    };

    void add(std::vector<std::filesystem::path> paths, AfterLoad after) {
        if (files_.paths.empty())
            files_.after = after;
        std::ranges::move(paths, std::back_inserter(files_.paths));
    }
    void addAction(const QString& name) { actions_ << name; }
    /// Why something has been refused.
    void setExplanation(std::string text) { explanation_ = std::move(text); }

    [[nodiscard]] Files takeFiles() { return std::exchange(files_, {}); }
    [[nodiscard]] std::string takeExplanation() { return std::exchange(explanation_, {}); }
    [[nodiscard]] QStringList takeActions() { return std::exchange(actions_, {}); }

private:
    Files files_;
    QStringList actions_;
    std::string explanation_;
};

} // namespace tambrel
