#include "MainViewLayout.h"

#include "DrivenWindow.h"
#include "MIDITrackBarsGeometry.h"
#include "TambrelLoadError.h"

#include <QFontMetricsF>

namespace tambrel {
namespace {

TEST(MainViewLayout, HasRoomForSixteenLanes) {
    const std::vector<MIDITrackPhraseLane> lanes(17, {"16", {{0, 1}}});
    const auto geometry = MIDITrackBarsGeometry::of(MainViewLayout::trackBars.size(), lanes, 17);
    ASSERT_GE(geometry.rows.size(), 16U);
    EXPECT_TRUE(geometry.border.contains(geometry.rows[15].strip));
}

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
    for (auto* button : driven.window->findChildren<QAbstractButton*>()) {
        for (const char* title : {"Play", "Pause", "Resume", "Loudness On"})
            EXPECT_LT(QFontMetricsF(button->font()).horizontalAdvance(title), button->width() - 3) << title;
    }
}

} // namespace
} // namespace tambrel
