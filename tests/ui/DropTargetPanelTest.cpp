#include "DropTargetPanel.h"

#include "RecordedLog.h"
#include "RetroLabel.h"
#include "ViewProbe.h"

#include <gmock/gmock.h>

#include <QDropEvent>
#include <QMimeData>
#include <QWindow>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto entered = "User Action: Dragged file over MIDI drop panel | DropTargetPanel.draggingEntered";
const std::string refused =
    "User Action: Dropped unsupported file on MIDI drop panel | DropTargetPanel.performDragOperation";

/// The panel as it stands in the window, with the file's name over its middle, under a drag from outside that
/// proposes to move the files.
class DropTargetPanelTest : public ::testing::Test {
protected:
    DropTargetPanelTest() {
        label.setGeometry(20, 20, 416, 44);
        label.show();
        panel.onFile = [this](const QUrl& file) { dropped.push_back(file.toString().toStdString()); };
    }

    /// Returns whether the panel would take what is dragged over it.
    bool enter(const std::vector<const char*>& urls) {
        QList<QUrl> list;
        for (const char* url : urls)
            list.push_back(QUrl(url));
        dragged.setUrls(list);
        QDragEnterEvent event({228, 42}, actions, &dragged, Qt::LeftButton, Qt::ShiftModifier);
        QCoreApplication::sendEvent(panel.windowHandle(), &event);
        return event.isAccepted();
    }
    void leave() {
        QDragLeaveEvent event;
        QCoreApplication::sendEvent(panel.windowHandle(), &event);
    }
    /// Returns what the source is told has been done with its files.
    Qt::DropAction drop() {
        QDropEvent event({228, 42}, actions, &dragged, Qt::LeftButton, Qt::ShiftModifier);
        QCoreApplication::sendEvent(panel.windowHandle(), &event);
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }
    [[nodiscard]] bool hasThickFrame() {
        return looksLike(picture(panel).pixel(30, 84 - 14), RetroTheme::ink());
    }

    RecordedLog recorded;
    DropTargetPanel panel{recorded.log};
    RetroLabel label{"DROP MIDI FILE", RetroTheme::songName(), Qt::AlignCenter, &panel};
    ShownView shown{panel, {456, 84}};
    QMimeData dragged;
    static constexpr Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
    std::vector<std::string> dropped;
};

TEST_F(DropTargetPanelTest, TakesTheFirstFileOfADropByItsName) {
    const struct {
        const char* name;
        std::vector<const char*> urls;
        const char* file; ///< Nothing: the drop is refused.
        std::string lastComponent;
    } rows[] = {
        {"files after a link",
         {"https://m/0.mid", "file:///m/my%20song.SMF2", "file:///m/2.mid"},
         "file:///m/my song.SMF2",
         "my song.SMF2"},
        {"a text file before a MIDI file", {"file:///m/a.txt", "file:///m/2.mid"}, nullptr, ""},
        {"an extension that only begins well", {"file:///m/song.mid.bak"}, nullptr, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(enter(row.urls)) << "decided at the drop";
        EXPECT_THAT(recorded.settled(), ElementsAre(entered));
        EXPECT_EQ(drop(), row.file ? Qt::CopyAction : Qt::IgnoreAction);
        EXPECT_THAT(recorded.taken(), IsEmpty()) << "logged only once the event has been handled";
        EXPECT_EQ(std::exchange(dropped, {}),
                  row.file ? std::vector<std::string>{row.file} : std::vector<std::string>{});
        EXPECT_THAT(recorded.settled(),
                    ElementsAre(row.file ? "User Action: Dropped MIDI-compatible file " + row.lastComponent +
                                               " | DropTargetPanel.performDragOperation"
                                         : refused));
        EXPECT_FALSE(hasThickFrame());
    }
}

TEST_F(DropTargetPanelTest, ThickensItsFrameWhileFilesAreOverIt) {
    EXPECT_FALSE(hasThickFrame());
    EXPECT_TRUE(enter({"file:///m/song.mid"}));
    EXPECT_TRUE(hasThickFrame());
    EXPECT_EQ(shown.paints(), 1);
    leave();
    EXPECT_FALSE(hasThickFrame());
    EXPECT_EQ(shown.paints(), 1);
    EXPECT_FALSE(enter({"https://m/song.mid"})) << "no file";
    EXPECT_FALSE(hasThickFrame());
    EXPECT_THAT(recorded.settled(), ElementsAre(entered)) << "the first time";
}

TEST_F(DropTargetPanelTest, IsFilledWhileLoadedUnderItsDashes) {
    label.hide();
    EXPECT_TRUE(looksLike(picture(panel).pixel(100, 42), RetroTheme::panel()));
    for (const int paints : {1, 0}) {
        panel.setLoaded(true);
        EXPECT_EQ(shown.paints(), paints);
    }
    const QImage loaded = picture(panel);
    for (const QPoint corner : {QPoint(14, 14), {441, 69}})
        EXPECT_TRUE(looksLike(loaded.pixel(corner), RetroTheme::darkBlueFill())) << corner.x();
    EXPECT_TRUE(looksLike(loaded.pixel(13, 42), RetroTheme::panel()));
    for (const int x : {12, 19, 26, 33}) // 8 on, 6 off, from the lower left corner.
        EXPECT_TRUE(looksLike(loaded.pixel(x, 71), RetroTheme::ink())) << x;
    for (const int x : {20, 25, 34})
        EXPECT_TRUE(looksLike(loaded.pixel(x, 71), RetroTheme::panel())) << x;
}

} // namespace
} // namespace tambrel
