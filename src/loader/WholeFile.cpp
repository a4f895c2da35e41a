#include "WholeFile.h"

#include "MIDIDataWriter.h"
#include "TambrelLoadError.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <exception>
#include <future>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tambrel::WholeFile {
namespace {

[[noreturn]] void failWith(int error) {
    throw std::system_error(error, std::generic_category());
}

/// An open file, closed with the object.
class Descriptor {
public:
    // O_NONBLOCK: a pipe that has taken the place of the file must not be waited for.
    explicit Descriptor(const std::filesystem::path& file)
        : number_(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
        if (number_ < 0)
            failWith(errno);
    }
    ~Descriptor() { ::close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] struct stat status() const {
        struct stat status {};
        if (::fstat(number_, &status) != 0)
            failWith(errno);
        return status;
    }

    /// Reads some bytes; 0 at the end of the file.
    [[nodiscard]] std::size_t read(std::span<std::uint8_t> to) const {
        ssize_t count = 0;
        do {
            count = ::read(number_, to.data(), to.size());
        } while (count < 0 && errno == EINTR);
        if (count < 0)
            failWith(errno);
        return static_cast<std::size_t>(count);
    }

private:
    int number_;
};

void requireRegularFile(const struct stat& status) {
    if (S_ISDIR(status.st_mode))
        failWith(EISDIR);
    if (!S_ISREG(status.st_mode))
        throw std::runtime_error("It is not a regular file.");
}

void requirePlayableSize(std::size_t size) {
    if (size > largestSize)
        throw std::runtime_error("It is too large: files of 2 GiB and more cannot be played.");
}

void requireGoingOn(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw TambrelLoadCancelled();
}

// Looks before it opens: to open a device may already start something.
Descriptor openRegularFile(const std::filesystem::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        failWith(errno);
    requireRegularFile(status);
    return Descriptor(file);
}

/// What comes of a read on a thread of its own: whoever settles it first has the say.
class Reading {
public:
    template<class Settle>
    void settle(Settle settle) {
        if (!isSettled_.test_and_set())
            settle(content_);
    }
    [[nodiscard]] std::future<MIDIData> content() { return content_.get_future(); }

private:
    std::atomic_flag isSettled_;
    std::promise<MIDIData> content_;
};

void readInto(Reading& reading, const std::filesystem::path& file, const std::stop_token& stop) {
    try {
        MIDIData content = read(file, stop);
        reading.settle([&content](auto& promise) { promise.set_value(std::move(content)); });
    } catch (...) {
        reading.settle([](auto& promise) { promise.set_exception(std::current_exception()); });
    }
}

} // namespace

// Read, not mapped: a mapped file that is cut short ends the program.
MIDIData read(const std::filesystem::path& file, const std::stop_token& stop) {
    constexpr std::size_t chunkSize = 4 << 20;
    requireGoingOn(stop);
    const Descriptor descriptor = openRegularFile(file);
    const struct stat status = descriptor.status();
    requireRegularFile(status);
    requirePlayableSize(static_cast<std::size_t>(status.st_size));

    MIDIDataWriter content(static_cast<std::size_t>(status.st_size) + 1); // One more, to see the end.
    for (;;) {
        requireGoingOn(stop);
        const auto room = content.room(1);
        const std::size_t count = descriptor.read(room.first(std::min(room.size(), chunkSize)));
        if (count == 0)
            return content.finish();
        content.commit(count);
        requirePlayableSize(content.size());
    }
}

// A network share that sleeps may hold a read up for ever. Nobody but its own thread waits for that then.
MIDIData readOrLeave(const std::filesystem::path& file, const std::stop_token& stop) {
    const auto reading = std::make_shared<Reading>();
    std::future<MIDIData> content = reading->content();
    std::thread([reading, file, stop] { readInto(*reading, file, stop); }).detach();
    const std::stop_callback leave(stop, [&reading] {
        reading->settle(
            [](auto& promise) { promise.set_exception(std::make_exception_ptr(TambrelLoadCancelled())); });
    });
    return content.get();
}

} // namespace tambrel::WholeFile
