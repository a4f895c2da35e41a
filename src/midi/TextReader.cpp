#include "TextReader.h"

#include "EventText.h"

#include <charconv>

namespace tambrel {
namespace {

bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\r';
}

int digitValue(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

bool TextReader::nextLine() {
    if (lineNumber_ > 0 && !isAtEnd())
        fail("There is more on the line than belongs there.");
    while (!rest_.empty()) {
        const auto end = rest_.find('\n');
        line_ = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        ++lineNumber_;
        skipBlanks();
        if (!line_.empty() && line_.front() != '#')
            return true;
    }
    line_ = {};
    return false;
}

void TextReader::skipBlanks() {
    while (!line_.empty() && isBlank(line_.front()))
        line_.remove_prefix(1);
}

bool TextReader::isAtEnd() {
    skipBlanks();
    return line_.empty();
}

std::string_view TextReader::word() {
    skipBlanks();
    std::size_t length = 0;
    while (length < line_.size() && !isBlank(line_[length]) && line_[length] != '/' && line_[length] != '"')
        ++length;
    if (length == 0)
        fail("A word is missing.");
    const std::string_view word = line_.substr(0, length);
    line_.remove_prefix(length);
    return word;
}

std::int64_t TextReader::number(std::int64_t least, std::int64_t most) {
    skipBlanks();
    std::int64_t value = 0;
    const char* const end = line_.data() + line_.size();
    const auto [after, error] = std::from_chars(line_.data(), end, value);
    if (error != std::errc{} || value < least || value > most)
        fail("A number from " + std::to_string(least) + " to " + std::to_string(most) + " is missing.");
    line_.remove_prefix(static_cast<std::size_t>(after - line_.data()));
    return value;
}

bool TextReader::takes(char character) {
    if (!line_.starts_with(character))
        return false;
    line_.remove_prefix(1);
    return true;
}

std::uint8_t TextReader::hexByte() {
    const int high = line_.empty() ? -1 : digitValue(line_[0]);
    const int low = line_.size() < 2 ? -1 : digitValue(line_[1]);
    if (high < 0 || low < 0)
        fail("Two hexadecimal digits are missing.");
    line_.remove_prefix(2);
    return static_cast<std::uint8_t>(high * 16 + low);
}

void TextReader::hex(Bytes& bytes) {
    while (!isAtEnd())
        bytes.push_back(hexByte());
}

void TextReader::quoted(Bytes& bytes) {
    skipBlanks();
    if (!takes('"'))
        fail("A text in quotation marks is missing.");
    while (!takes('"')) {
        if (line_.empty())
            fail("The text has no closing quotation mark.");
        const bool escaped = takes('\\');
        if (escaped && takes('x')) {
            bytes.push_back(hexByte());
            continue;
        }
        if (escaped && !line_.starts_with('"') && !line_.starts_with('\\'))
            fail("After a backslash comes \", \\ or x and two digits.");
        bytes.push_back(static_cast<std::uint8_t>(line_.front()));
        line_.remove_prefix(1);
    }
}

void TextReader::fail(const std::string& reason) const {
    throw EventText::Error("Line " + std::to_string(lineNumber_) + ": " + reason);
}

} // namespace tambrel
