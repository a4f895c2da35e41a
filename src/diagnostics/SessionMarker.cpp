#include "SessionMarker.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tambrel {
namespace {

// A file that its owner has deleted meanwhile is not the marker any more.
bool isDeleted(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && status.st_nlink == 0;
}

[[noreturn]] void fail() {
    throw std::system_error(errno, std::generic_category());
}

} // namespace

SessionMarker::SessionMarker(QString path) : path_(std::move(path)) {}

SessionMarker::~SessionMarker() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

bool SessionMarker::takeLeftBehind() {
    if (descriptor_ >= 0)
        return false;
    const auto attempt = take(0);
    return attempt == Attempt::taken || (attempt == Attempt::failed && QFile::exists(path_));
}

void SessionMarker::write(std::string_view text) {
    if (descriptor_ < 0) {
        const auto attempt = take(O_CREAT);
        isAnothers_ = attempt == Attempt::anothers;
        if (isAnothers_)
            return;
        if (attempt != Attempt::taken)
            fail();
    }
    // In place, so that the lock stays on the file of this name. Only its being there has a meaning.
    const auto written = pwrite(descriptor_, text.data(), text.size(), 0);
    if (written < 0 || ftruncate(descriptor_, written) != 0)
        fail();
}

void SessionMarker::remove() {
    if (isAnothers_ || (descriptor_ < 0 && take(0) != Attempt::taken))
        return;
    QFile::remove(path_); // Before the lock is let go.
    close(std::exchange(descriptor_, -1));
}

SessionMarker::Attempt SessionMarker::take(int flags) {
    for (;;) {
        descriptor_ = open(QFile::encodeName(path_).constData(), O_RDWR | O_CLOEXEC | flags, 0666);
        if (descriptor_ < 0)
            return errno == ENOENT ? Attempt::missing : Attempt::failed;
        // Where locks are not supported, every run has the marker.
        const bool isAnothers = flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
        if (!isAnothers && !isDeleted(descriptor_))
            return Attempt::taken;
        close(std::exchange(descriptor_, -1));
        if (isAnothers)
            return Attempt::anothers;
    }
}

} // namespace tambrel
