#include "SessionMarker.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tambrel {
namespace {

const QString nameStart = QStringLiteral("Tambrel-session-active");
const QString nameEnd = QStringLiteral(".marker");

[[noreturn]] void fail() {
    throw std::system_error(errno, std::generic_category());
}

// Its owner may have deleted it before it was locked here.
bool isDeleted(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && status.st_nlink == 0;
}

} // namespace

class SessionMarker::LockedFile {
public:
    explicit LockedFile(QString path) : path_(std::move(path)) {}
    ~LockedFile() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;

    /// False while another run has it. A file that cannot be opened counts as locked.
    [[nodiscard]] bool lock(int flags) {
        for (;;) {
            isWritable_ = open(O_RDWR | flags);
            // Another user's marker cannot be written, but can be deleted.
            if (!isWritable_ && !(flags == 0 && errno == EACCES && open(O_RDONLY)))
                return true;
            // Where flock is not supported, every run takes the marker for its own.
            const bool isLockedElsewhere = flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
            if (!isLockedElsewhere && !isDeleted(descriptor_))
                return true;
            close(std::exchange(descriptor_, -1));
            if (isLockedElsewhere)
                return false;
        }
    }

    [[nodiscard]] bool isWritable() const { return isWritable_; }
    [[nodiscard]] bool exists() const { return QFile::exists(path_); }

    // In place, so that the lock stays on the file of this name. Only its existence matters.
    void write(std::string_view text) const {
        const auto written = pwrite(descriptor_, text.data(), text.size(), 0);
        if (written < 0 || ftruncate(descriptor_, written) != 0)
            fail();
    }
    /// While it is locked.
    void remove() const { QFile::remove(path_); }

private:
    [[nodiscard]] bool open(int flags) {
        descriptor_ = ::open(QFile::encodeName(path_).constData(), flags | O_CLOEXEC, 0600);
        return descriptor_ >= 0;
    }

    QString path_;
    bool isWritable_ = false;
    int descriptor_ = -1;
};

SessionMarker::SessionMarker(QString folder) : folder_(std::move(folder)) {}
SessionMarker::~SessionMarker() = default;

bool SessionMarker::takeLeftBehind() {
    if (own_ || !leftBehind_.empty())
        return false;
    const QDir folder(folder_);
    for (const QString& name :
         folder.entryList({nameStart + '*' + nameEnd}, QDir::AllEntries | QDir::Hidden | QDir::System)) {
        auto file = std::make_unique<LockedFile>(folder.filePath(name));
        if (file->lock(0) && file->exists())
            leftBehind_.push_back(std::move(file));
    }
    return !leftBehind_.empty();
}

void SessionMarker::write(std::string_view text) {
    if (!own_)
        own_ = make();
    own_->write(text);
    removeLeftBehind();
}

void SessionMarker::remove() {
    if (own_)
        own_->remove();
    else
        static_cast<void>(takeLeftBehind());
    own_.reset();
    removeLeftBehind();
}

// Uses a marker that was left behind again: on a full disk no new one could be made.
std::unique_ptr<SessionMarker::LockedFile> SessionMarker::make() {
    const auto usable = std::ranges::find_if(leftBehind_, &LockedFile::isWritable);
    if (usable != leftBehind_.end()) {
        auto file = std::move(*usable);
        leftBehind_.erase(usable);
        return file;
    }
    removeLeftBehind();
    for (int run = 1;; ++run) {
        const QString number = run == 1 ? QString() : QString::number(-run);
        auto file = std::make_unique<LockedFile>(folder_ + '/' + nameStart + number + nameEnd);
        if (!file->lock(O_CREAT))
            continue;
        if (!file->isWritable())
            fail();
        return file;
    }
}

void SessionMarker::removeLeftBehind() {
    for (const auto& file : leftBehind_)
        file->remove();
    leftBehind_.clear();
}

} // namespace tambrel
