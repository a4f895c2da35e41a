#include "Chase.h"

#include <algorithm>

namespace tambrel {
namespace {

// A song whose notes never end would hold more than the audio callback has time for.
void keepYoungest(std::vector<Chased>& chased) {
    constexpr std::size_t mostNotes = 128;
    std::vector<double> ages;
    for (const Chased& each : chased) {
        if (each.isNote)
            ages.push_back(each.age);
    }
    if (ages.size() <= mostNotes)
        return;
    std::ranges::nth_element(ages, ages.begin() + mostNotes);
    std::erase_if(
        chased, [oldest = ages[mostNotes]](const Chased& each) { return each.isNote && each.age >= oldest; });
}

} // namespace

std::vector<Chased> chaseTo(const Timeline& song, std::size_t index, double seconds) {
    std::vector<Chased> result;
    for (const ChasedMessage& chased : song.stateBefore(index).messages()) {
        const double age = chased.isNote() ? seconds - song.tempoMap().secondsAt(chased.tick) : 0;
        result.push_back({chased.message, chased.isNote(), std::max(age, 0.0)});
    }
    keepYoungest(result);
    return result;
}

} // namespace tambrel
