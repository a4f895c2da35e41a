#pragma once

#include "SerialExecutor.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <memory>

namespace tambrel {

/// A file that the user has opened.
struct RecentFile {
    QString address;  ///< file: address, percent-encoded.
    QString mimeType; ///< Such as "audio/midi".
};

/// The desktop's list of recent files: `recently-used.xbel` in the user's data folder, by the Desktop
/// Bookmark format of freedesktop.org, which file managers and Open panels read. Main thread only; the
/// list is read and written on a thread of its own, for the last time before the object is gone.
class RecentFiles {
public:
    /// Puts a file into the list. A list that cannot be read or written stays as it is.
    void add(const RecentFile& file);

    /// The list with this file in it, opened at `now`, and all that others have entered. Empty when `list` is
    /// neither empty nor such a list. Any thread.
    [[nodiscard]] static QByteArray withFile(const QByteArray& list, const RecentFile& file,
                                             const QDateTime& now);

private:
    std::unique_ptr<SerialExecutor> executor_; ///< Made for the first file.
};

} // namespace tambrel
