#pragma once

#include "ApplicationInfo.h"
#include "SongPage.h"
#include "SoundPage.h"

#include <QDialog>

#include <optional>
#include <string>

class QTabWidget;

namespace tambrel {

/// What the About / Get Info panel says and changes.
struct AboutFacts {
    ApplicationInfo info;
    std::string builtOn; ///< The libraries and their versions.
    SoundPageFacts sound;
    std::optional<SongPageFacts> song = {};
};

enum class InfoPage { song, sound, keys, tambrel };

/// The About / Get Info panel: one window beside the main window, which blocks nothing. Pages of the song,
/// the sound, the keys and the program. All its texts can be reached, selected and copied by keyboard; Escape
/// closes it. Main thread.
class TambrelAboutPanel : public QDialog {
public:
    /// Shows the owner's panel in front, at a page, with these facts.
    static void show(QWidget& owner, const AboutFacts& facts, InfoPage page);
    /// The owner's panel; null when there is none.
    [[nodiscard]] static TambrelAboutPanel* of(const QWidget& owner);

    // It follows what changes while it is open.
    void showSong(const std::optional<SongPageFacts>& song) { songPage_->setSong(song); }
    void refreshSound() { soundPage_->refresh(); }

private:
    TambrelAboutPanel(QWidget& owner, const AboutFacts& facts, InfoPage page);
    [[nodiscard]] QTabWidget* makePages(const AboutFacts& facts, InfoPage page);

    // Children.
    SongPage* songPage_ = nullptr;
    SoundPage* soundPage_ = nullptr;
};

} // namespace tambrel
