#include "DropTargetPanel.h"

#include "RecordedActions.h"
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

constexpr auto entered = "Dragged file over MIDI drop panel | DropTargetPanel.draggingEntered";
const std::string refused =
    "Dropped unsupported file on MIDI drop panel | DropTargetPanel.performDragOperation";

/// The panel as it stands in the window, with the file's name over its middle, under a drag from outside that
/// proposes to move the files.
class DropTargetPanelTest : public ::testing::Test {
protected:
    DropTargetPanelTest() {
        label.setGeometry(20, 20, 416, 44);
        label.show();
        panel.onUserAction = recorded.log();
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
        EXPECT_EQ(event.isAccepted(), event.dropAction() == Qt::CopyAction);
        return event.dropAction();
    }
    RecordedActions recorded;
    DropTargetPanel panel;
    RetroLabel label{"DROP MIDI FILE", RetroTheme::songName(), Qt::AlignCenter, &panel};
    ShownView shown{panel, {456, 84}};
    QMimeData dragged;
    Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
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
        {"another computer's file", {"file://other/m/song.mid"}, nullptr, ""},
        {"an extension that only begins well", {"file:///m/song.mid.bak"}, nullptr, ""},
    };
    const QImage untouched = picture(panel);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(enter(row.urls)) << "decided at the drop";
        EXPECT_THAT(recorded.settled(), ElementsAre(entered));
        EXPECT_EQ(drop(), row.file ? Qt::CopyAction : Qt::IgnoreAction);
        EXPECT_THAT(recorded.taken(), IsEmpty()) << "logged only once the event has been handled";
        EXPECT_EQ(std::exchange(dropped, {}),
                  row.file ? std::vector<std::string>{row.file} : std::vector<std::string>{});
        EXPECT_THAT(recorded.settled(),
                    ElementsAre(row.file ? "Dropped MIDI-compatible file " + row.lastComponent +
                                               " | DropTargetPanel.performDragOperation"
                                         : refused));
        EXPECT_EQ(picture(panel), untouched);
    }
}

TEST_F(DropTargetPanelTest, IsRepaintedWhenFilesComeOverItAndWhenTheyLeave) {
    const QImage untouched = picture(panel);
    EXPECT_TRUE(enter({"file:///m/song.mid"}));
    EXPECT_EQ(shown.paints(), 1);
    EXPECT_NE(picture(panel), untouched);
    leave();
    EXPECT_EQ(shown.paints(), 1);
    EXPECT_EQ(picture(panel), untouched);
    EXPECT_FALSE(enter({"https://m/song.mid"})) << "no file";
    actions = Qt::MoveAction;
    EXPECT_FALSE(enter({"file:///m/song.mid"})) << "the source would delete it";
    EXPECT_EQ(picture(panel), untouched);
    EXPECT_THAT(recorded.settled(), ElementsAre(entered)) << "the first time";
    for (const int paints : {1, 0}) {
        panel.setLoaded(true);
        EXPECT_EQ(shown.paints(), paints);
    }
}

} // namespace
} // namespace tambrel
