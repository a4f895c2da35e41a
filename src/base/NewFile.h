#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <sys/types.h>

namespace tambrel {

/// A file that appears whole or not at all. It is written without a name (O_TMPFILE), so that nothing is left
/// behind even when the program is killed; where the file system cannot do that, under a temporary name
/// beside the wanted one. `keep` gives it the wanted name. Without `keep` it vanishes, and an existing file
/// stays. A symbolic link is followed, and a replaced file passes on its mode. Throws std::system_error with
/// the operating system's words. Blocks on the disk; one thread at a time.
class NewFile {
public:
    enum class Existing { replace, keep };

    /// Throws where there is a file that may not be written, or something that is no file, such as a device.
    explicit NewFile(const std::filesystem::path& wanted);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Open for writing and reading until the end of this object.
    [[nodiscard]] int descriptor() const { return descriptor_; }
    void write(std::span<const unsigned char> bytes);

    /// Takes the wanted name, once. With Existing::keep, throws when something has that name.
    void keep(Existing existing);

private:
    [[nodiscard]] bool takesName(const std::string& name) const;
    void openNamed();
    void giveName();
    void moveTo(Existing existing);
    void claimAndMove();

    std::filesystem::path wanted_; // What a symbolic link leads to.
    std::string temporary_;        // Empty while it has no name, and once it has the wanted one.
    std::optional<mode_t> mode_;   // Of the file that is there already.
    int descriptor_ = -1;
};

} // namespace tambrel
