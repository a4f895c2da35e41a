#pragma once

#include <QString>

#include <memory>
#include <string_view>
#include <vector>

namespace tambrel {

/// The file that is there while a run of the program goes on, and is found by the next one when the run did
/// not end: "Tambrel-session-active.marker" in the folder, or "Tambrel-session-active-2.marker" and so on for
/// a run beside others. The run that has one locks it (flock), so that another one which is started meanwhile
/// takes it for no crash and leaves it alone. The lock ends with the process, the file does not. One thread.
class SessionMarker {
public:
    explicit SessionMarker(QString folder);
    ~SessionMarker();
    SessionMarker(const SessionMarker&) = delete;
    SessionMarker& operator=(const SessionMarker&) = delete;

    /// Takes the markers that earlier runs left behind. True when there are any, even of another user; false
    /// when there are none but those of runs that go on.
    [[nodiscard]] bool takeLeftBehind();

    /// Makes this run's marker if need be, and replaces its text; then deletes the others that it has taken.
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
