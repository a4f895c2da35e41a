#pragma once

#include "MIDIData.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tambrel {

/// Reads the words of a text line by line. Blanks around words do not count; a line that is empty or begins
/// with "#" is passed over. What is wrong throws EventText::Error with the number of the line. One thread at
/// a time.
class TextReader {
public:
    explicit TextReader(std::string_view text) : rest_(text) {}

    /// Goes to the next line; false at the end of the text. Throws when something is left on this one.
    bool nextLine();

    [[nodiscard]] bool isAtEnd(); ///< Of the line.
    /// The character that comes next; 0 at the end of the line.
    [[nodiscard]] char peek() const { return line_.empty() ? char{} : line_.front(); }
    /// The next word, which ends before a blank, "/" or a quotation mark. Throws when there is none.
    std::string_view word();
    /// The number that comes next, whatever follows it. Throws when it is out of range.
    std::int64_t number(std::int64_t least, std::int64_t most);
    /// Takes the character and returns true if it comes next, without a blank before it.
    bool takes(char character);
    /// Appends bytes of two hexadecimal digits each, up to the end of the line.
    void hex(Bytes& bytes);
    /// Appends the bytes between quotation marks.
    void quoted(Bytes& bytes);

    [[noreturn]] void fail(const std::string& reason) const;

private:
    void skipBlanks();
    std::uint8_t hexByte();

    std::string_view rest_; // Of the text after this line.
    std::string_view line_; // What is left of it.
    std::int64_t lineNumber_ = 0;
};

} // namespace tambrel
