#include "RandomSongs.h"

#include <filesystem>
#include <fstream>
#include <iostream>

using namespace tambrel;
using namespace tambrel::testing;

namespace {

void write(const std::filesystem::path& file, const Bytes& bytes) {
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// Every kind of packet that is read, once.
Bytes clip() {
    return clipBytes({0x00400000, 0x003000C0, 0xF0200000, 0,          0,          0,
                      0xD0100000, 50'000'000, 0,          0,          0xD0100001, 0x04020800,
                      0,          0,          0x20903C64, 0x0040000A, 0x40E10000, 0x80000000,
                      0x0040000A, 0x219A3C00, 0x40C00000, 0x21000000, 0x10F80000, 0x30000000,
                      0,          0xF0210000, 0,          0,          0});
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::cerr << "Usage: tambrel_fuzz_seeds FOLDER\n";
        return 2;
    }
    const std::filesystem::path folder = arguments[1];
    std::filesystem::create_directories(folder);
    RandomSongs songs(6);
    for (int i = 0; i < 30; ++i)
        write(folder / ("song-" + std::to_string(i) + ".mid"), songs.next());
    write(folder / "every-packet.clip", clip());
    write(folder / "note.clip", clipBytes({0x20903C64}));
}
