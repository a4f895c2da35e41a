#include "SoundPage.h"

#include "QtText.h"
#include "RetroLabel.h"
#include "WholeLinesText.h"

#include <QComboBox>
#include <QSlider>
#include <QVBoxLayout>

#include <utility>

namespace tambrel {
namespace {

constexpr int percent = 100;

void addCaption(QWidget& page, const QString& text) {
    page.layout()->addWidget(new RetroLabel(text, RetroTheme::display(), Qt::AlignLeft, &page));
}

} // namespace

SoundPage::SoundPage(SoundPageFacts facts) : facts_(std::move(facts)) {
    auto* column = new QVBoxLayout(this);
    addBanks();
    addCaption(*this, "OUTPUT");
    auto* output = new WholeLinesText("Output", toQString(facts_.output), this);
    output->setFixedLines(2);
    column->addWidget(output);
    addVolume();
    column->addStretch();
}

void SoundPage::addBanks() {
    addCaption(*this, "SOUND BANK");
    auto* banks = new QComboBox(this);
    banks->setObjectName("banks");
    banks->setAccessibleName("Sound bank");
    banks->setAccessibleDescription("Sound bank"); // The name that is heard is the choice.
    banks->setFont(RetroTheme::monospaced(12));
    for (const SoundPageFacts::Bank& bank : facts_.banks)
        banks->addItem(toQString(bank.name));
    banks->setCurrentIndex(static_cast<int>(facts_.chosenBank));
    layout()->addWidget(banks);
    auto* inUse = new WholeLinesText("Sound bank in use", toQString(facts_.bankInUse()), this);
    inUse->setFixedLines(3);
    layout()->addWidget(inUse);
    connect(banks, &QComboBox::activated, this, [this, inUse](int index) {
        facts_.chooseBank(facts_.banks[static_cast<std::size_t>(index)].path);
        inUse->setPlainText(toQString(facts_.bankInUse()));
    });
}

void SoundPage::addVolume() {
    addCaption(*this, "VOLUME");
    auto* volume = new QSlider(Qt::Horizontal, this);
    volume->setObjectName("volume");
    volume->setAccessibleName("Volume");
    volume->setRange(0, percent);
    volume->setPageStep(percent / 10);
    volume->setValue(qRound(facts_.volume * percent));
    connect(volume, &QSlider::valueChanged, this,
            [this](int value) { facts_.setVolume(1.0 * value / percent); });
    layout()->addWidget(volume);
}

} // namespace tambrel
