#pragma once

#include "Commands.h"

#include <string>

namespace tambrel::cli {

/// What the words after options mean. All throw UsageError. Pure, any thread.

/// Seconds from "12.5", "1:30" or "1:02:03.5".
[[nodiscard]] double timeValue(const std::string& text);
[[nodiscard]] SoundContainer containerValue(const std::string& text);
/// "16", "24" or "float".
[[nodiscard]] SampleForm sampleValue(const std::string& text);
/// "tracks" or "channels".
[[nodiscard]] Stems stemsValue(const std::string& text);
/// "track:2" or "channel:10".
void addParts(const std::string& text, NoteParts& parts);

[[nodiscard]] bool isNumber(const std::string& text);
/// The factor of an amplitude.
[[nodiscard]] double factorOf(double decibels);

} // namespace tambrel::cli
