#include "NewFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tambrel {
namespace {

constexpr mode_t usualMode = 0666; // The kernel takes away what the user's umask says.

[[noreturn]] void fail(int error) {
    throw std::system_error(error, std::generic_category());
}

std::filesystem::path followed(std::filesystem::path path) {
    constexpr int mostLinks = 40;
    std::error_code error;
    for (int links = 0; std::filesystem::is_symlink(path, error); ++links) {
        if (links == mostLinks)
            fail(ELOOP);
        path = path.parent_path() / std::filesystem::read_symlink(path);
    }
    return path;
}

// The mode of the file that is there; absent when there is none.
std::optional<mode_t> modeOfReplaceable(const std::filesystem::path& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0)
        return std::nullopt;
    if (S_ISDIR(status.st_mode))
        fail(EISDIR);
    if (!S_ISREG(status.st_mode)) // A device must not be renamed away.
        fail(ENODEV);
    // A file that nobody may write is meant to stay, even for root.
    if ((status.st_mode & 0222) == 0 || access(file.c_str(), W_OK) != 0)
        fail(EACCES);
    return status.st_mode & 07777;
}

std::string randomNameBeside(const std::filesystem::path& file) {
    std::random_device random;
    return file.native() + "." + std::to_string(random());
}

} // namespace

NewFile::NewFile(const std::filesystem::path& wanted)
    : wanted_(followed(wanted)), mode_(modeOfReplaceable(wanted_)) {
    if (!wanted_.has_filename())
        fail(EISDIR);
    const std::string folder = wanted_.has_parent_path() ? wanted_.parent_path().native() : ".";
    descriptor_ = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode_.value_or(usualMode));
    // File systems without O_TMPFILE answer in several ways; any other error occurs here again.
    if (descriptor_ < 0)
        openNamed();
}

NewFile::~NewFile() {
    close(descriptor_);
    if (!temporary_.empty())
        unlink(temporary_.c_str());
}

void NewFile::openNamed() {
    do {
        temporary_ = randomNameBeside(wanted_);
        descriptor_ =
            open(temporary_.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, mode_.value_or(usualMode));
    } while (descriptor_ < 0 && errno == EEXIST);
    if (descriptor_ < 0)
        fail(errno);
}

void NewFile::write(std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            fail(errno);
        bytes = bytes.subspan(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
}

void NewFile::keep(Existing existing) {
    if (mode_ && fchmod(descriptor_, *mode_) != 0)
        fail(errno);
    if (temporary_.empty()) {
        if (takesName(wanted_.native()))
            return;
        if (existing == Existing::keep)
            fail(EEXIST);
        giveName();
    }
    moveTo(existing);
    temporary_.clear();
}

// Gives the nameless file this name; false when the name is taken.
bool NewFile::takesName(const std::string& name) const {
    const std::string self = "/proc/self/fd/" + std::to_string(descriptor_);
    if (linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0)
        return true;
    if (errno != EEXIST)
        fail(errno);
    return false;
}

// Only a file with a name can be moved over another.
void NewFile::giveName() {
    std::string name;
    do
        name = randomNameBeside(wanted_);
    while (!takesName(name));
    temporary_ = std::move(name);
}

void NewFile::moveTo(Existing existing) {
    const unsigned flags = existing == Existing::keep ? RENAME_NOREPLACE : 0;
    if (renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, wanted_.c_str(), flags) == 0)
        return;
    if (flags == 0 || (errno != EINVAL && errno != ENOSYS))
        fail(errno);
    claimAndMove();
}

// For FUSE file systems, which rename but cannot be told not to replace.
void NewFile::claimAndMove() {
    const int claim = open(wanted_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (claim < 0)
        fail(errno);
    close(claim);
    if (rename(temporary_.c_str(), wanted_.c_str()) == 0)
        return;
    const int error = errno;
    unlink(wanted_.c_str());
    fail(error);
}

} // namespace tambrel
