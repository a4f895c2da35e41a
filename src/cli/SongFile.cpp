#include "SongFile.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

namespace tambrel::cli {

MIDIData readSong(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    Bytes bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!stream.good() && !stream.eof())
        throw std::system_error(errno, std::generic_category());
    return MIDIData(std::move(bytes));
}

} // namespace tambrel::cli
