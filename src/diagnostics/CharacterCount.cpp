#include "CharacterCount.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <new>
#include <unicode/brkiter.h>
#include <unicode/utext.h>

namespace tambrel {
namespace {

using icu::BreakIterator;

// Offsets have 32 bits. A few thousand characters never reach this far.
constexpr std::size_t longestWalk = std::size_t{1} << 30;

/// Steps from character to character through a text, which outlives it. Offsets are bytes.
class CharacterWalk {
public:
    explicit CharacterWalk(std::string_view text) {
        UErrorCode status = U_ZERO_ERROR;
        characters_.reset(BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        text_.reset(utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
        if (U_SUCCESS(status))
            characters_->setText(text_.get(), status);
        if (U_FAILURE(status)) // Fails only for want of memory.
            throw std::bad_alloc();
    }

    BreakIterator* operator->() { return characters_.get(); }

private:
    struct Close {
        void operator()(UText* text) const { utext_close(text); }
    };

    std::unique_ptr<UText, Close> text_;
    std::unique_ptr<BreakIterator> characters_;
};

} // namespace

std::int64_t characterCount(std::string_view text) {
    CharacterWalk walk(text);
    std::int64_t count = 0;
    while (walk->next() != BreakIterator::DONE)
        ++count;
    return count;
}

bool hasMoreCharactersThan(std::string_view text, std::int64_t limit) {
    assert(limit >= 0);
    if (static_cast<std::int64_t>(text.size()) <= limit)
        return false;
    CharacterWalk walk(text.substr(0, longestWalk));
    const std::int32_t end = walk->next(static_cast<std::int32_t>(limit));
    return end != BreakIterator::DONE && static_cast<std::size_t>(end) < text.size();
}

std::string_view lastCharacters(std::string_view text, std::int64_t count) {
    assert(count >= 0);
    if (static_cast<std::int64_t>(text.size()) <= count)
        return text;
    const std::size_t skipped = text.size() - std::min(text.size(), longestWalk);
    const std::string_view walked = text.substr(skipped);
    CharacterWalk walk(walked);
    walk->last();
    const std::int32_t start = walk->next(-static_cast<std::int32_t>(count));
    return start == BreakIterator::DONE ? text : walked.substr(static_cast<std::size_t>(start));
}

} // namespace tambrel
