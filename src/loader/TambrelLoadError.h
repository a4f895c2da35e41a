#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace tambrel {

/// Every failure of a load. Texts are UTF-8. Any thread.
class TambrelLoadError : public std::exception {
public:
    enum class Case {
        unreadableFile,
        invalidMIDI2Clip,
        malformedMIDIData,
        unsupportedMIDIFormat,
        playbackPreparationFailed,
    };

    [[nodiscard]] static TambrelLoadError unreadableFile(std::string_view fileName, std::string_view reason);
    [[nodiscard]] static TambrelLoadError invalidMIDI2Clip(std::string_view reason);
    [[nodiscard]] static TambrelLoadError malformedMIDIData(std::string_view reason);
    [[nodiscard]] static TambrelLoadError unsupportedMIDIFormat(std::uint16_t format);
    [[nodiscard]] static TambrelLoadError playbackPreparationFailed(std::string_view reason);

    [[nodiscard]] Case errorCase() const { return case_; }
    /// The name of the case, such as "unreadableFile".
    [[nodiscard]] std::string_view caseName() const;
    /// Short text for the interface.
    [[nodiscard]] const std::string& userMessage() const { return userMessage_; }
    /// Two words for the status label.
    [[nodiscard]] std::string_view statusTitle() const;
    /// Detailed text for the diagnostic log.
    [[nodiscard]] const std::string& diagnosticDescription() const { return diagnosticDescription_; }
    [[nodiscard]] const char* what() const noexcept override { return diagnosticDescription_.c_str(); }

    /// The reason that another error stands for: the operating system's words for a std::system_error, else
    /// `what`.
    [[nodiscard]] static std::string diagnosticReason(const std::exception& error);

private:
    TambrelLoadError(Case errorCase, std::string userMessage, std::string diagnosticDescription);

    Case case_;
    std::string userMessage_;
    std::string diagnosticDescription_;
};

/// Thrown instead of a result when a stop was requested; the user is not told. Any thread.
class TambrelLoadCancelled : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "The load was cancelled."; }
};

} // namespace tambrel
