#include "Values.h"

#include "Console.h"
#include "RenderNames.h"

#include <charconv>
#include <cmath>
#include <map>
#include <string_view>

namespace tambrel::cli {
namespace {

template<class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

template<class Value>
Value oneOf(const std::map<std::string, Value>& values, const std::string& text) {
    const auto found = values.find(text);
    if (found != values.end())
        return found->second;
    std::string all;
    for (const auto& [name, value] : values)
        all += (all.empty() ? "" : ", ") + name;
    throw UsageError(printable(text) + " is none of " + all + ".");
}

} // namespace

double timeValue(const std::string& text) {
    constexpr double sixty = 60;
    std::string_view rest = text;
    double seconds = 0;
    for (int parts = 0; parts < 3; ++parts) {
        const auto colon = rest.find(':');
        const auto number = numberIn<double>(rest.substr(0, colon));
        const bool isFirst = parts == 0;
        if (!number || !std::isfinite(*number) || *number < 0 || (!isFirst && *number >= sixty))
            break;
        seconds = seconds * sixty + *number;
        if (colon == std::string_view::npos)
            return seconds;
        rest.remove_prefix(colon + 1);
    }
    throw UsageError(printable(text) + " is no time; write seconds, or minutes:seconds.");
}

SoundContainer containerValue(const std::string& text) {
    if (const auto container = containerCalled(text))
        return *container;
    throw UsageError(printable(text) + " is none of wav, flac, ogg, opus, raw.");
}

SampleForm sampleValue(const std::string& text) {
    return oneOf<SampleForm>(
        {{"16", SampleForm::int16}, {"24", SampleForm::int24}, {"float", SampleForm::float32}}, text);
}

Stems stemsValue(const std::string& text) {
    return oneOf<Stems>({{"tracks", Stems::tracks}, {"channels", Stems::channels}}, text);
}

void addParts(const std::string& text, NoteParts& parts) {
    const auto colon = text.find(':');
    const std::string_view kind = std::string_view(text).substr(0, colon);
    const auto number = colon == std::string::npos
                            ? std::nullopt
                            : numberIn<std::size_t>(std::string_view(text).substr(colon + 1));
    if (number && *number >= 1 && kind == "track")
        parts.tracks.insert(*number);
    else if (number && *number >= 1 && *number <= 16 && kind == "channel")
        parts.channels.insert(*number);
    else
        throw UsageError(printable(text) + " is no part; write track:2 or channel:10.");
}

bool isNumber(const std::string& text) {
    return numberIn<double>(text).has_value();
}

double factorOf(double decibels) {
    return std::pow(10, decibels / 20);
}

} // namespace tambrel::cli
