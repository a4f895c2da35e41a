#include "InfoTexts.h"

#include "ApplicationInfo.h"
#include "QtText.h"

#include <QFile>
#include <QStringList>

#include <utility>

namespace tambrel {

QString versionText(const ApplicationInfo& info) {
    const std::string unknown = "unknown";
    return toQString("Version " + info.shortVersion.value_or(unknown) + ", build " +
                     info.build.value_or(unknown));
}

QString creditsText(const QString& builtOn) {
    return "Made by Kestrune Software. MIT licence.\nBuilt with " + builtOn + ".";
}

QString keysText() {
    constexpr int keyWidth = 22;
    const std::pair<const char*, const char*> rows[] = {
        {"Space", "plays and pauses"},
        {"Ctrl+R", "returns to zero"},
        {"Ctrl+.", "stops"},
        {"Ctrl+O", "opens a file"},
        {"Tab, Shift+Tab", "goes through the controls and back"},
        {"Return", "presses the button with the focus"},
        {"Left, Right", "timeline: 5 seconds back or on"},
        {"Page Down, Page Up", "timeline: 30 seconds back or on"},
        {"Home, End", "timeline: the beginning or the end"},
        {"Ctrl+I", "shows what is in the song"},
        {"Ctrl+?, F1", "shows these keys"},
        {"Escape", "closes this panel"},
        {"Ctrl+H, Ctrl+M", "minimizes the program, the window"},
        {"Ctrl+B", "shows the log, in beta versions"},
        {"Ctrl+Q", "quits"},
        {"Alt and a letter", "opens the menu with that letter"},
    };
    QStringList lines;
    for (const auto& [key, action] : rows)
        lines << QString(key).leftJustified(keyWidth) + action;
    return lines.join('\n');
}

QString licenceText() {
    QFile file(":/LICENSE");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList paragraphs = QString::fromUtf8(file.readAll()).trimmed().split("\n\n");
    for (QString& paragraph : paragraphs)
        paragraph.replace('\n', ' ');
    return paragraphs.join("\n\n");
}

} // namespace tambrel
