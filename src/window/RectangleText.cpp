#include "RectangleText.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace tambrel {
namespace {

std::string numberText(double number) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

/// Reads marks and numbers from the front of a text, and remembers whether one was missing.
class Reader {
public:
    explicit Reader(std::string_view text) : rest_(text) {}

    Reader& mark(char mark) {
        skipBlanks();
        isGood_ = isGood_ && rest_.starts_with(mark);
        rest_.remove_prefix(isGood_ ? 1 : 0);
        return *this;
    }
    Reader& number(double& value) {
        skipBlanks();
        const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
        isGood_ = isGood_ && error == std::errc();
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return *this;
    }
    [[nodiscard]] bool isDone() {
        skipBlanks();
        return isGood_ && rest_.empty();
    }

private:
    void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(' '), rest_.size())); }

    std::string_view rest_;
    bool isGood_ = true;
};

} // namespace

std::string rectangleText(const QRectF& rectangle) {
    return "{{" + numberText(rectangle.x()) + ", " + numberText(rectangle.y()) + "}, {" +
           numberText(rectangle.width()) + ", " + numberText(rectangle.height()) + "}}";
}

std::optional<QRectF> rectangleFromText(std::string_view text) {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    Reader reader(text);
    reader.mark('{').mark('{').number(x).mark(',').number(y).mark('}').mark(',');
    reader.mark('{').number(width).mark(',').number(height).mark('}').mark('}');
    if (!reader.isDone())
        return std::nullopt;
    return QRectF(x, y, width, height);
}

} // namespace tambrel
