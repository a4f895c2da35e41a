#pragma once

#include "MIDIData.h"

#include <QTemporaryDir>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tambrel {

/// All that is in a file; nothing when there is none.
[[nodiscard]] inline std::string content(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator(in), {}};
}

/// A folder of files that goes with the test.
class TestFiles {
public:
    TestFiles() = default;
    TestFiles(const TestFiles&) = delete;
    TestFiles& operator=(const TestFiles&) = delete;
    ~TestFiles() { std::filesystem::remove_all(path("")); } // Names that are no UTF-8 included.

    [[nodiscard]] std::filesystem::path path(const std::string& name) const {
        return std::filesystem::path(folder_.path().toStdString()) / name;
    }
    std::filesystem::path write(const std::string& name, const Bytes& bytes) const {
        std::ofstream out(path(name), std::ios::binary);
        out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return path(name);
    }

private:
    QTemporaryDir folder_;
};

} // namespace tambrel
