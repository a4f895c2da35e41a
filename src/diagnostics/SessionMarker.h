#pragma once

#include <QString>

#include <string_view>

namespace tambrel {

/// The file that is there while a run of the program goes on, and is found by the next one when the run did
/// not end. The run that has it locks it (flock), so that another one which is started meanwhile takes it for
/// no crash and leaves it alone. The lock ends with the process, the file does not. One thread.
class SessionMarker {
public:
    explicit SessionMarker(QString path);
    ~SessionMarker();
    SessionMarker(const SessionMarker&) = delete;
    SessionMarker& operator=(const SessionMarker&) = delete;

    /// Takes the marker that an earlier run left behind. True when there is one, even one that cannot be
    /// taken; false when there is none, when another run has it, or when this one does.
    [[nodiscard]] bool takeLeftBehind();

    /// Makes the marker if need be, and replaces its text; does nothing while another run has it. Throws
    /// std::system_error.
    void write(std::string_view text);

    /// Deletes the marker, unless another run has it or had it when this one wanted to write.
    void remove();

private:
    enum class Attempt { taken, missing, failed, anothers };
    [[nodiscard]] Attempt take(int flags);

    QString path_;
    bool isAnothers_ = false;
    int descriptor_ = -1; // Open and locked while this run has the marker.
};

} // namespace tambrel
