#pragma once

#include <QWidget>

#include <functional>
#include <string>
#include <vector>

class QComboBox;
class QSlider;

namespace tambrel {

class WholeLinesText;

/// What the Sound page shows and changes.
struct SoundPageFacts {
    struct Bank {
        std::string name;
        std::string path; ///< Empty: whichever is the system's default.
    };
    std::vector<Bank> banks;
    std::size_t chosenBank = 0;
    std::function<std::string()> bankInUse; ///< Its path, or why there is none.
    std::function<std::string()> output;    ///< The one in use, and those that are tried.
    std::function<double()> volume;         ///< 0 to 1.
    /// Takes effect at once and in the next run.
    std::function<void(const std::string& path)> chooseBank;
    std::function<void(double volume)> setVolume;
};

/// The page on which the sound bank and the volume are chosen. Main thread.
class SoundPage : public QWidget {
public:
    explicit SoundPage(SoundPageFacts facts);

    /// Shows the facts as they are now: something else has changed them.
    void refresh();

private:
    void addBanks();
    void addVolume();

    const SoundPageFacts facts_;
    // Children.
    WholeLinesText* bankInUse_ = nullptr;
    WholeLinesText* output_ = nullptr;
    QSlider* volume_ = nullptr;
};

} // namespace tambrel
