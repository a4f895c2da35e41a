#include "Inputs.h"

#include "Interruption.h"

#include "MIDIDataWriter.h"
#include "TambrelFileLoader.h"
#include "UTF8.h"
#include "WholeFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tambrel::cli {
namespace {

class Descriptor {
public:
    explicit Descriptor(const std::filesystem::path& file)
        : isStandardInput_(file == standardStream),
          // O_NONBLOCK: to wait here for a writer of a pipe could not be interrupted.
          descriptor_(isStandardInput_ ? STDIN_FILENO
                                       : open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
        if (descriptor_ < 0)
            throw std::system_error(errno, std::generic_category());
    }
    ~Descriptor() {
        if (!isStandardInput_)
            close(descriptor_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    // Waits for bytes; 0 at the end.
    [[nodiscard]] std::size_t read(std::span<std::uint8_t> room) const {
        for (;;) {
            pollfd waiting[] = {{descriptor_, POLLIN, 0}, {Interruption::descriptor(), POLLIN, 0}};
            if (poll(waiting, 2, -1) < 0 && errno != EINTR)
                throw std::system_error(errno, std::generic_category());
            if (Interruption::signal() != 0)
                throw TambrelLoadCancelled();
            const ssize_t count = ::read(descriptor_, room.data(), room.size());
            if (count >= 0)
                return static_cast<std::size_t>(count);
            if (errno != EINTR && errno != EAGAIN)
                throw std::system_error(errno, std::generic_category());
        }
    }

private:
    bool isStandardInput_;
    int descriptor_;
};

bool isStream(const std::filesystem::path& file) {
    struct stat status {};
    return file == standardStream ||
           (stat(file.c_str(), &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)));
}

MIDIData readStream(const std::filesystem::path& file) {
    const Descriptor descriptor(file);
    MIDIDataWriter content(1 << 16);
    while (const std::size_t count = descriptor.read(content.room(1))) {
        content.commit(count);
        if (content.size() > WholeFile::largestSize)
            throw std::runtime_error("It is larger than 2 GiB.");
    }
    return content.finish();
}

} // namespace

std::vector<std::filesystem::path> inputs(const InputOptions& options) {
    std::vector<std::filesystem::path> files = options.operands;
    if (options.namesFrom.empty()) {
        if (files.empty())
            throw UsageError("No input is named.");
        return files;
    }
    MIDIData list;
    try {
        list = readStream(options.namesFrom);
    } catch (const std::system_error& error) {
        throw std::runtime_error(options.namesFrom + ": " + error.code().message());
    }
    const ByteView bytes = list;
    for (auto at = bytes.begin(); at != bytes.end();) {
        const auto end = std::find(at, bytes.end(), 0);
        if (at == end)
            throw std::runtime_error(options.namesFrom + ": A name in the list is empty.");
        files.emplace_back(std::string(at, end));
        at = end == bytes.end() ? end : end + 1;
    }
    return files;
}

MIDIData readInput(const std::filesystem::path& file) {
    try {
        return isStream(file) ? readStream(file) : WholeFile::read(file, Interruption::token());
    } catch (const TambrelLoadCancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw TambrelLoadError::unreadableFile(UTF8::repaired(file.native()),
                                               TambrelLoadError::diagnosticReason(error));
    }
}

TambrelLoadedFile loadInput(const std::filesystem::path& file) {
    if (isStream(file))
        return TambrelFileLoader::loadBytes(readInput(file), file, Interruption::token());
    return TambrelFileLoader::load(file, Interruption::token(), {}, WholeFile::read);
}

} // namespace tambrel::cli
