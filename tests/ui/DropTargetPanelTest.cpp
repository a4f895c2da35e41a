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
constexpr auto refused =
    "User Action: Dropped unsupported file on MIDI drop panel | DropTargetPanel.performDragOperation";

std::string accepted(const std::string& name) {
    return "User Action: Dropped MIDI-compatible file " + name + " | DropTargetPanel.performDragOperation";
}

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
    bool enter(std::vector<const char*> urls, Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction) {
        QList<QUrl> list;
        for (const char* url : urls)
            list.push_back(QUrl(url));
        dragged.setUrls(list);
        actions = offered;
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
    Qt::DropActions actions = Qt::CopyAction;
    std::vector<std::string> dropped;
};

TEST_F(DropTargetPanelTest, TakesTheFirstFileOfADropByItsName) {
    struct Row {
        const char* name;
        std::vector<const char*> urls;
        const char* file; ///< Nothing: the drop is refused.
        const char* lastComponent;
    };
    const Row rows[] = {
        {"a MIDI file", {"file:///m/song.mid"}, "file:///m/song.mid", "song.mid"},
        {"an extension in capitals", {"file:///m/song.MID"}, "file:///m/song.MID", "song.MID"},
        {"a clip", {"file:///m/a.b.Midi2"}, "file:///m/a.b.Midi2", "a.b.Midi2"},
        {"a name with blanks", {"file:///m/my%20song.smf2"}, "file:///m/my song.smf2", "my song.smf2"},
        {"three files",
         {"file:///m/1.mid", "file:///m/2.mid", "file:///m/3.mid"},
         "file:///m/1.mid",
         "1.mid"},
        {"a file after a link", {"https://m/0.mid", "file:///m/1.mid"}, "file:///m/1.mid", "1.mid"},
        {"a text file", {"file:///m/song.txt"}, nullptr, nullptr},
        {"a text file before MIDI files", {"file:///m/a.txt", "file:///m/2.mid"}, nullptr, nullptr},
        {"an extension that only begins well", {"file:///m/song.mid.bak"}, nullptr, nullptr},
        {"no extension", {"file:///m/mid"}, nullptr, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(enter(row.urls));
        EXPECT_THAT(recorded.settled(), ElementsAre(entered));
        const Qt::DropAction action = drop();
        EXPECT_THAT(recorded.taken(), IsEmpty()) << "logged only once the event has been handled";
        if (row.file) {
            EXPECT_EQ(action, Qt::CopyAction);
            EXPECT_THAT(std::exchange(dropped, {}), ElementsAre(row.file));
            EXPECT_THAT(recorded.settled(), ElementsAre(accepted(row.lastComponent)));
        } else {
            EXPECT_EQ(action, Qt::IgnoreAction);
            EXPECT_THAT(dropped, IsEmpty());
            EXPECT_THAT(recorded.settled(), ElementsAre(refused));
        }
        EXPECT_FALSE(hasThickFrame());
    }
}

TEST_F(DropTargetPanelTest, ThickensItsFrameWhileFilesAreOverIt) {
    EXPECT_FALSE(hasThickFrame());
    EXPECT_TRUE(enter({"file:///m/song.txt"})) << "decided at the drop";
    EXPECT_TRUE(hasThickFrame());
    EXPECT_EQ(shown.paints(), 1);
    leave();
    EXPECT_FALSE(hasThickFrame());
    EXPECT_EQ(shown.paints(), 1);
    EXPECT_THAT(recorded.settled(), ElementsAre(entered));

    EXPECT_FALSE(enter({"https://m/song.mid"})) << "no file";
    EXPECT_FALSE(hasThickFrame());
    EXPECT_THAT(recorded.settled(), IsEmpty());
}

TEST_F(DropTargetPanelTest, IsFilledWhileLoadedUnderItsDashes) {
    label.hide();
    const QImage empty = picture(panel);
    EXPECT_TRUE(looksLike(empty.pixel(100, 42), RetroTheme::panel()));
    panel.setLoaded(true);
    EXPECT_EQ(shown.paints(), 1);
    panel.setLoaded(true);
    EXPECT_EQ(shown.paints(), 0);
    const QImage loaded = picture(panel);
    EXPECT_TRUE(looksLike(loaded.pixel(14, 14), RetroTheme::darkBlueFill()));
    EXPECT_TRUE(looksLike(loaded.pixel(441, 69), RetroTheme::darkBlueFill()));
    EXPECT_TRUE(looksLike(loaded.pixel(13, 42), RetroTheme::panel()));
    for (const int x : {12, 19, 26, 33}) // 8 on, 6 off, from the lower left corner.
        EXPECT_TRUE(looksLike(loaded.pixel(x, 71), RetroTheme::ink())) << x;
    for (const int x : {20, 25, 34})
        EXPECT_TRUE(looksLike(loaded.pixel(x, 71), RetroTheme::panel())) << x;
}

TEST_F(DropTargetPanelTest, IsCrispAtEveryScale) {
    label.hide();
    panel.setLoaded(true);
    const auto isCrisp = [&](double scale) {
        return showsOnly(picture(panel, scale),
                         {RetroTheme::ink(), RetroTheme::panel(), RetroTheme::darkBlueFill()});
    };
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
        EXPECT_TRUE(isCrisp(scale)) << scale;
        enter({"file:///m/song.mid"});
        EXPECT_TRUE(isCrisp(scale)) << scale << ", hovering";
        leave();
    }
}

} // namespace
} // namespace tambrel
