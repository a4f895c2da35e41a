#include "MainViewLayout.h"

#include "DrivenWindow.h"
#include "MIDITrackBarsGeometry.h"
#include "TambrelLoadError.h"

#include <QFontMetricsF>

namespace tambrel {
namespace {

namespace Layout = MainViewLayout;

TEST(MainViewLayout, KeepsItsMarginsAndPutsNothingOnTopOfAnother) {
    std::vector<QRect> all{Layout::title,    Layout::status,     Layout::ledZone,  Layout::dropPanel,
                           Layout::counter,  Layout::moduleZone, Layout::tempo,    Layout::key,
                           Layout::tracks,   Layout::length,     Layout::progress, Layout::timeline,
                           Layout::trackBars};
    all.insert(all.end(), Layout::buttons.begin(), Layout::buttons.end());
    const QRect grid = QRect(0, 0, Layout::contentSize, Layout::contentSize).adjusted(12, 12, -12, -12);
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_TRUE(grid.contains(all[i])) << i;
        for (std::size_t other = 0; other < i; ++other)
            EXPECT_FALSE(all[i].intersects(all[other])) << i << " on " << other;
    }
    EXPECT_TRUE(Layout::ledZone.contains(Layout::activity));
    EXPECT_TRUE(Layout::dropPanel.contains(Layout::file));
    EXPECT_TRUE(Layout::moduleZone.contains(Layout::logo));
    EXPECT_TRUE(Layout::moduleZone.contains(Layout::gmModule));
    EXPECT_FALSE(Layout::logo.intersects(Layout::gmModule));
}

TEST(MainViewLayout, HasRoomForSixteenLanes) {
    const std::vector<MIDITrackPhraseLane> lanes(17, {"16", {{0, 1}}});
    const auto geometry = MIDITrackBarsGeometry::of(Layout::trackBars.size(), lanes, 17);
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
