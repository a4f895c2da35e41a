#include "SoundPage.h"

#include "QtText.h"
#include "RetroLabel.h"
#include "WholeLinesText.h"

#include <QComboBox>
#include <QSignalBlocker>
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
    output_ = new WholeLinesText("Output", {}, this);
    output_->setFixedLines(2);
    output_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // Qt wants one for two lines in two.
    column->addWidget(output_);
    addVolume();
    column->addStretch();
    refresh();
}

void SoundPage::refresh() {
    const auto show = [](WholeLinesText& place, const QString& text) {
        if (place.toPlainText() != text) // Which a reader may be selecting.
            place.setPlainText(text);
    };
    show(*bankInUse_, toQString(facts_.bankInUse()));
    show(*output_, toQString(facts_.output()));
    const QSignalBlocker isNoWish(*volume_);
    volume_->setValue(qRound(facts_.volume() * percent));
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
    bankInUse_ = new WholeLinesText("Sound bank in use", {}, this);
    bankInUse_->setFixedLines(3);
    layout()->addWidget(bankInUse_);
    connect(banks, &QComboBox::activated, this, [this](int index) {
        facts_.chooseBank(facts_.banks[static_cast<std::size_t>(index)].path);
        refresh();
    });
}

void SoundPage::addVolume() {
    addCaption(*this, "VOLUME");
    volume_ = new QSlider(Qt::Horizontal, this);
    volume_->setObjectName("volume");
    volume_->setAccessibleName("Volume");
    volume_->setRange(0, percent);
    volume_->setPageStep(percent / 10);
    connect(volume_, &QSlider::valueChanged, this,
            [this](int value) { facts_.setVolume(1.0 * value / percent); });
    layout()->addWidget(volume_);
}

} // namespace tambrel
