#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace tambrel {

/// Succeeds when the text is, byte by byte, that of the file `name` in tests/expected; else the message is
/// the difference, as diff prints it. Where TAMBREL_ACCEPT_EXPECTED is set, the text becomes the file's, and
/// `scripts/accept-expected` shows what has changed.
[[nodiscard]] inline ::testing::AssertionResult isExpected(const std::string& text, const std::string& name) {
    namespace fs = std::filesystem;
    const auto write = [&text](const fs::path& file) {
        fs::create_directories(file.parent_path());
        EXPECT_TRUE(std::ofstream(file, std::ios::binary) << text << std::flush) << file;
    };
    const fs::path expected = fs::path(TAMBREL_EXPECTED_TEXTS) / name;
    if (std::getenv("TAMBREL_ACCEPT_EXPECTED") != nullptr) {
        write(expected);
        return ::testing::AssertionSuccess();
    }
    std::ifstream kept(expected, std::ios::binary);
    if (kept && std::string(std::istreambuf_iterator(kept), {}) == text)
        return ::testing::AssertionSuccess();

    const fs::path received = fs::temp_directory_path() / ("tambrel-" + std::to_string(getpid())) / name;
    write(received);
    const auto command = "diff -auN --label 'tests/expected/" + name + "' --label received '" +
                         expected.string() + "' '" + received.string() + "'";
    auto failure = ::testing::AssertionFailure();
    if (std::FILE* difference = popen(command.c_str(), "r")) {
        std::array<char, 4096> part{};
        while (const auto size = std::fread(part.data(), 1, part.size(), difference))
            failure << std::string(part.data(), size);
        pclose(difference);
    }
    fs::remove_all(fs::temp_directory_path() / ("tambrel-" + std::to_string(getpid())));
    return failure << "If this is right: scripts/accept-expected";
}

/// Throws when what has been received so far is not how the file begins: the test need not wait for what will
/// not come any more.
inline void expectBeginning(const std::string& text, const std::string& name) {
    std::ifstream kept(std::filesystem::path(TAMBREL_EXPECTED_TEXTS) / name, std::ios::binary);
    if (std::getenv("TAMBREL_ACCEPT_EXPECTED") == nullptr &&
        !std::string(std::istreambuf_iterator(kept), {}).starts_with(text))
        throw std::runtime_error(isExpected(text, name).message());
}

} // namespace tambrel
