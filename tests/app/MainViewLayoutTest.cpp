#include "DrivenWindow.h"
#include "RetroButton.h"
#include "TambrelLoadError.h"

#include <QFontMetricsF>

namespace tambrel {
namespace {

TEST(MainViewLayout, HasRoomForTheLongestTexts) {
    PlayerScript script;
    const DrivenWindow driven(script.factory());
    const std::pair<const char*, std::string> rows[] = {
        {"titleLabel", "TAMBREL"},
        {"statusLabel", "Unsupported Format"},
        {"gmModuleLabel", "GM Module"},
        {"tempoLabel", "60000000.000 BPS"},
        {"keyLabel", "KEY Unknown minor"},
        {"tracksLabel", "65535 Tracks"},
        {"lengthLabel", "LENGTH 1000:00:00.00"},
        {"progressLabel", "PROGRESS 1000:00:00.00"},
        {"fileLabel", TambrelLoadError::invalidMIDI2Clip("").userMessage()},
        {"fileLabel", TambrelLoadError::unsupportedMIDIFormat(65535).userMessage()},
    };
    for (const auto& [name, text] : rows) {
        auto& label = driven.view<RetroLabel>(name);
        label.setText(QString::fromStdString(text));
        const auto line = label.line();
        EXPECT_EQ(line.text.toStdString(), text);
        EXPECT_LE(QFontMetricsF(line.font).height(), label.height()) << text;
    }
    for (const auto& [name, longest] : {std::pair("playPauseButton", "Resume"),
                                        {"stopButton", "Stop"},
                                        {"rtzButton", "RTZ"},
                                        {"loudnessButton", "Loudness On"},
                                        {"clearButton", "Clear"}}) {
        const auto& button = driven.view<RetroButton>(name);
        const double face = RetroButtonGeometry::of(button.size(), false).face.width();
        EXPECT_GE(face - QFontMetricsF(button.font()).horizontalAdvance(longest), 16) << longest;
    }
}

} // namespace
} // namespace tambrel
