#include "MainViewLayout.h"

#include "DrivenWindow.h"
#include "MIDITrackBarsGeometry.h"
#include "TambrelLoadError.h"

#include <QFontMetricsF>

namespace tambrel {
namespace {

namespace Layout = MainViewLayout;

struct Place {
    const char* name;
    QRect rect;
    const char* within = nullptr; ///< The place that it is meant to lie in.
};

std::vector<Place> places() {
    std::vector<Place> all{{"title", Layout::title},
                           {"status", Layout::status},
                           {"ledZone", Layout::ledZone},
                           {"activity", Layout::activity, "ledZone"},
                           {"dropPanel", Layout::dropPanel},
                           {"file", Layout::file, "dropPanel"},
                           {"counter", Layout::counter},
                           {"moduleZone", Layout::moduleZone},
                           {"logo", Layout::logo, "moduleZone"},
                           {"gmModule", Layout::gmModule, "moduleZone"},
                           {"tempo", Layout::tempo},
                           {"key", Layout::key},
                           {"tracks", Layout::tracks},
                           {"length", Layout::length},
                           {"progress", Layout::progress},
                           {"timeline", Layout::timeline},
                           {"trackBars", Layout::trackBars}};
    for (const QRect& button : Layout::buttons)
        all.push_back({"button", button});
    return all;
}

TEST(MainViewLayout, KeepsItsMarginsAndPutsNothingOnTopOfAnother) {
    const auto all = places();
    const QRect grid = QRect(0, 0, Layout::contentSize, Layout::contentSize).adjusted(12, 12, -12, -12);
    for (const Place& place : all) {
        EXPECT_TRUE(grid.contains(place.rect)) << place.name;
        for (const Place& other : all) {
            const bool isInside = place.within && std::string(place.within) == other.name;
            const bool isAround = other.within && std::string(other.within) == place.name;
            if (isInside) {
                EXPECT_TRUE(other.rect.contains(place.rect)) << place.name << " in " << other.name;
            } else if (&place != &other && !isAround) {
                EXPECT_FALSE(place.rect.intersects(other.rect)) << place.name << " on " << other.name;
            }
        }
    }
}

TEST(MainViewLayout, PutsFiveButtonsEightApartFromMarginToMargin) {
    const auto& buttons = Layout::buttons;
    EXPECT_EQ(buttons.front().left(), 12);
    EXPECT_EQ(buttons.back().right() + 1, Layout::contentSize - 12);
    for (std::size_t i = 1; i < buttons.size(); ++i) {
        EXPECT_EQ(buttons[i].left() - buttons[i - 1].right() - 1, 8) << i;
        EXPECT_LE(std::abs(buttons[i].width() - buttons[i - 1].width()), 1) << i;
        EXPECT_EQ(buttons[i].top(), buttons[0].top()) << i;
    }
}

TEST(MainViewLayout, HasRoomForSixteenLanes) {
    const std::vector<MIDITrackPhraseLane> lanes(17, {"16", {{0, 1}}});
    const auto geometry = MIDITrackBarsGeometry::of(Layout::trackBars.size(), lanes, 17);
    ASSERT_GE(geometry.rows.size(), 16U);
    EXPECT_TRUE(geometry.border.contains(geometry.rows[15].strip));
}

class MainWindowLayoutTest : public ::testing::Test {
protected:
    PlayerScript script;
    DrivenWindow driven{script.factory()};
};

TEST_F(MainWindowLayoutTest, ShowsTheLongestTextsWhole) {
    const auto message = [](const TambrelLoadError& error) { return error.userMessage(); };
    struct Row {
        const char* label;
        std::string text;
    };
    const Row rows[] = {
        {"titleLabel", "TAMBREL"},
        {"statusLabel", "Unsupported Format"},
        {"statusLabel", "Invalid MIDI 2.0"},
        {"statusLabel", "Loaded MIDI 2.0"},
        {"gmModuleLabel", "GM Module"},
        {"tempoLabel", "16777.216 BPS"},
        {"tempoLabel", "60000000.000 BPS"},
        {"keyLabel", "KEY Unknown minor"},
        {"tracksLabel", "65535 Tracks"},
        {"lengthLabel", "LENGTH 1000:00:00.00"},
        {"progressLabel", "PROGRESS 1000:00:00.00"},
        {"fileLabel", "DROP MIDI FILE"},
        {"fileLabel", message(TambrelLoadError::unreadableFile("", ""))},
        {"fileLabel", message(TambrelLoadError::invalidMIDI2Clip(""))},
        {"fileLabel", message(TambrelLoadError::malformedMIDIData(""))},
        {"fileLabel", message(TambrelLoadError::unsupportedMIDIFormat(65535))},
        {"fileLabel", message(TambrelLoadError::playbackPreparationFailed(""))},
    };
    for (const Row& row : rows) {
        auto& label = driven.view<RetroLabel>(row.label);
        label.setText(QString::fromStdString(row.text));
        const auto line = label.line();
        EXPECT_EQ(line.text.toStdString(), row.text);
        EXPECT_LE(QFontMetricsF(line.font).height(), label.height()) << row.text;
    }
    for (auto* button : driven.window->findChildren<QAbstractButton*>()) {
        for (const char* title : {"Play", "Pause", "Resume", "Loudness On"})
            EXPECT_LT(QFontMetricsF(button->font()).horizontalAdvance(title), button->width() - 3) << title;
    }
}

} // namespace
} // namespace tambrel
