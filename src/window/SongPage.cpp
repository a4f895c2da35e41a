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

SongPage::SongPage(const std::optional<SongPageFacts>& song)
    : WholeLinesText("Song", song ? textOf(song->facts) : QString("No song is loaded.")) {
    if (!song)
        return;
    executor_.run(
        [data = song->data, stop = closing_.get_token()] {
            return textOf(songFacts(SongDetails::gather(data.view(), stop)));
        },
        [this](const QString& more) { setPlainText(toPlainText() + '\n' + more); });
}

SongPage::~SongPage() {
    closing_.request_stop(); // The executor waits for what it does.
}

} // namespace tambrel
