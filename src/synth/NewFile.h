#pragma once

#include <filesystem>
#include <span>
#include <string>

namespace tambrel {

/// A file that appears whole or not at all: it is written under a name of its own beside the wanted one,
/// which it takes at the end. Without that end it vanishes, and what stood at the wanted place stays. Errors
/// are std::system_error with the operating system's words.
class NewFile {
public:
    enum class Existing { replace, keep };

    /// Refuses a place where there is something that is no file, such as a device.
    explicit NewFile(std::filesystem::path wanted);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Open for writing until `keep` or the end of this object.
    [[nodiscard]] int descriptor() const { return descriptor_; }
    void write(std::span<const unsigned char> bytes);

    /// Takes the wanted name. With Existing::keep, fails when there is something by that name.
    void keep(Existing existing);

private:
    void close();

    std::filesystem::path wanted_;
    std::string temporary_; // Empty once it has its name.
    int descriptor_ = -1;
};

} // namespace tambrel
