#pragma once

#include "LargePages.h"
#include "MIDIData.h"
#include "UTF8.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace tambrel {

/// Writes words, numbers and bytes, with a blank before each that does not begin a line. One thread at a
/// time.
class TextWriter {
public:
    explicit TextWriter(std::size_t expectedSize) {
        text_.reserve(expectedSize);
        preferLargePages(text_.data(), text_.capacity());
    }
    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;

    /// Of at most 32 characters.
    void word(std::string_view text) {
        separate();
        std::memcpy(end_, text.data(), text.size());
        end_ += text.size();
    }
    void number(std::int64_t value) {
        separate();
        joinedNumber(value);
    }
    /// Without a blank before it.
    void joined(char character) { *end_++ = character; }
    void joinedNumber(std::int64_t value) {
        if (value < 0 || value > UINT32_MAX)
            end_ = std::to_chars(end_, end_ + 24, value).ptr;
        else if (value >= 100)
            end_ = std::to_chars(end_, end_ + 24, static_cast<std::uint32_t>(value)).ptr;
        else
            shortNumber(static_cast<unsigned>(value));
    }

    void hex(ByteView bytes) {
        if (bytes.empty())
            return;
        separate();
        flush();
        for (const std::uint8_t byte : bytes)
            hexByte(byte);
    }

    /// Between quotation marks; a byte of no printable UTF-8 character as \x and two digits.
    void quoted(ByteView bytes) {
        separate();
        flush();
        text_ += '"';
        std::string_view rest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        while (!rest.empty()) {
            const std::size_t length = UTF8::characterLength(rest);
            const auto first = static_cast<std::uint8_t>(rest[0]);
            if (length == 0 || first < 0x20 || first == 0x7F) {
                text_ += "\\x";
                hexByte(first);
                rest.remove_prefix(1);
                continue;
            }
            if (first == '"' || first == '\\')
                text_ += '\\';
            text_ += rest.substr(0, length);
            rest.remove_prefix(length);
        }
        text_ += '"';
    }

    void endLine() {
        *end_++ = '\n';
        beginsLine_ = true;
    }

    [[nodiscard]] std::string take() {
        flush();
        return std::move(text_);
    }

private:
    void separate() {
        if (end_ > recent_.data() + recent_.size() - roomForWords) [[unlikely]]
            flush();
        if (!beginsLine_)
            *end_++ = ' ';
        beginsLine_ = false;
    }
    [[gnu::noinline]] void flush() {
        text_.append(recent_.data(), end_);
        end_ = recent_.data();
    }
    // Below 100, as most numbers of a song are.
    void shortNumber(unsigned value) {
        const bool hasTens = value >= 10;
        end_[0] = static_cast<char>('0' + value / 10);
        end_[hasTens ? 1 : 0] = static_cast<char>('0' + value % 10);
        end_ += hasTens ? 2 : 1;
    }
    void hexByte(std::uint8_t byte) {
        constexpr std::string_view digits = "0123456789abcdef";
        text_ += digits[byte >> 4];
        text_ += digits[byte & 15];
    }

    static constexpr std::size_t roomForWords = 256; // More than is written before the next blank.

    std::string text_;
    // Not yet appended to the text: to append every word would cost more.
    std::array<char, 8192> recent_;
    char* end_ = recent_.data();
    bool beginsLine_ = true;
};

} // namespace tambrel
