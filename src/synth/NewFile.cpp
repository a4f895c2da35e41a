#include "NewFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tambrel {
namespace {

[[noreturn]] void fail() {
    throw std::system_error(errno, std::generic_category());
}

// What a new file of this user's has; that of a temporary one is private.
mode_t usualMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

NewFile::NewFile(std::filesystem::path wanted)
    : wanted_(std::move(wanted)), temporary_(wanted_.native() + ".XXXXXX") {
    std::error_code ignored;
    if (std::filesystem::is_directory(wanted_, ignored))
        throw std::system_error(EISDIR, std::generic_category());
    if (std::filesystem::exists(wanted_, ignored) && !std::filesystem::is_regular_file(wanted_, ignored))
        throw std::system_error(ENODEV, std::generic_category()); // A device must not be renamed away.
    descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (descriptor_ < 0)
        fail();
}

NewFile::~NewFile() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
    if (!temporary_.empty())
        unlink(temporary_.c_str());
}

void NewFile::write(std::span<const unsigned char> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            fail();
        bytes = bytes.subspan(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
}

void NewFile::keep(Existing existing) {
    if (fchmod(descriptor_, usualMode()) != 0)
        fail();
    close();
    const unsigned flags = existing == Existing::keep ? RENAME_NOREPLACE : 0;
    if (renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, wanted_.c_str(), flags) != 0)
        fail();
    temporary_.clear();
}

void NewFile::close() {
    if (::close(std::exchange(descriptor_, -1)) != 0)
        fail();
}

} // namespace tambrel
