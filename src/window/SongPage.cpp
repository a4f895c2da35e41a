#include "SongPage.h"

#include "QtText.h"

namespace tambrel {
namespace {

QString textOf(const std::vector<SongFact>& facts) {
    constexpr int nameWidth = 11;
    QStringList lines;
    for (const SongFact& fact : facts)
        lines << toQString(fact.name).leftJustified(nameWidth - 1) + ' ' + toQString(fact.value).simplified();
    return lines.join('\n');
}

} // namespace

SongPage::SongPage(const std::optional<SongPageFacts>& song) : WholeLinesText("Song", {}) {
    setSong(song);
}

SongPage::~SongPage() {
    search_.request_stop(); // The executor waits for what it does.
}

void SongPage::setSong(const std::optional<SongPageFacts>& song) {
    search_.request_stop();
    search_ = std::stop_source();
    setPlainText(song ? textOf(song->facts) : QString("No song is loaded."));
    if (!song)
        return;
    const std::stop_token stop = search_.get_token();
    executor_.run(
        [data = song->data, stop] { return textOf(songFacts(SongDetails::gather(data.view(), stop))); },
        [this, stop](const QString& more) {
            if (!stop.stop_requested())
                setPlainText(toPlainText() + '\n' + more);
        });
}

} // namespace tambrel
