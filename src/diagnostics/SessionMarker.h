#pragma once

#include <QString>

#include <memory>
#include <string_view>
#include <vector>

namespace tambrel {

/// A file that exists while a run of the program goes on; one that is left behind tells the next run of a
/// crash. It is "Tambrel-session-active.marker" in the folder, or "Tambrel-session-active-2.marker" and so on
/// for runs at the same time. A run locks its marker (flock), so that others do not take it for a crash: the
/// lock ends with the process, the file does not. One thread.
class SessionMarker {
public:
    explicit SessionMarker(QString folder);
    ~SessionMarker();
    SessionMarker(const SessionMarker&) = delete;
    SessionMarker& operator=(const SessionMarker&) = delete;

    /// Takes over the markers that crashed runs left behind, also another user's. True when there are any.
    [[nodiscard]] bool takeLeftBehind();

    /// Makes this run's marker if need be, and replaces its text; then deletes those that it has taken over.
    /// Throws std::system_error.
    void write(std::string_view text);

    /// Deletes this run's marker, or those left behind when it has none.
    void remove();

private:
    class LockedFile;
    [[nodiscard]] std::unique_ptr<LockedFile> make();
    void removeLeftBehind();

    QString folder_;
    std::unique_ptr<LockedFile> own_;
    std::vector<std::unique_ptr<LockedFile>> leftBehind_;
};

} // namespace tambrel
