#include "MainViewController.h"

#include "MIDIFileInfo.h"
#include "TambrelBetaLog.h"
#include "TambrelMIDIFileSupport.h"
#include "TimeText.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

#include <system_error>

namespace tambrel {
namespace {

constexpr double sliderStepsPerSecond = 100;

QString formatted(double seconds) {
    return QString::fromStdString(timeText(seconds));
}

MIDIData readFile(const std::filesystem::path& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(file.errorString().toStdString());
    const QByteArray bytes = file.readAll();
    return MIDIData(Bytes(bytes.begin(), bytes.end()));
}

} // namespace

MainViewController::MainViewController(MIDIFilePlayerFactory makePlayer, TambrelBetaLog& log)
    : log_(log), player_(std::move(makePlayer), log) {
    setFixedSize(contentSize, contentSize);
    buildInterface();
    wirePlayer();
    resetInterface("DROP MIDI FILE", "READY");
}

void MainViewController::buildInterface() {
    log_.procedure("MainViewController.buildInterface",
                   "Building controls, labels, drop target, and transport");
    auto* column = new QVBoxLayout(this);
    for (QLabel** label : {&statusLabel_, &fileLabel_, &tempoLabel_, &keyLabel_, &tracksLabel_, &lengthLabel_,
                           &progressLabel_}) {
        *label = new QLabel(this);
        (*label)->setAlignment(Qt::AlignCenter);
        column->addWidget(*label);
    }
    timeline_ = new QSlider(Qt::Horizontal, this);
    column->addWidget(timeline_);
    connect(timeline_, &QSlider::sliderMoved, this,
            [this](int steps) { player_.seek(steps / sliderStepsPerSecond); });

    auto* row = new QHBoxLayout;
    column->addLayout(row);
    const auto addButton = [&](const QString& title, void (MainViewController::*action)()) {
        auto* button = new QPushButton(title, this);
        row->addWidget(button);
        connect(button, &QPushButton::clicked, this, action);
        return button;
    };
    playPauseButton_ = addButton("Play", &MainViewController::playPause);
    addButton("Stop", &MainViewController::stop);
    addButton("RTZ", &MainViewController::rtz);
}

void MainViewController::wirePlayer() {
    player_.onProgress = [this](double position, double duration) { showProgress(position, duration); };
    player_.onStateChange = [this](PlaybackMode mode) { showMode(mode); };
    player_.onLoaded = [this](double duration) {
        timeline_->setMaximum(static_cast<int>(duration * sliderStepsPerSecond));
    };
}

void MainViewController::load(const std::filesystem::path& file) {
    const std::string name = file.filename().string();
    log_.function("MainViewController.load(url:)", [&] { return "Loading MIDI file " + name; });
    try {
        const MIDIData song = readFile(file);
        const MIDIFileInfo info = MIDIFileInfo::parse(song);
        player_.load(song);
        statusLabel_->setText("Loaded");
        fileLabel_->setText(QString::fromStdString(name));
        tempoLabel_->setText(info.tempoBPM ? QString::asprintf("%.3f BPM", *info.tempoBPM) : "---.--- BPS");
        keyLabel_->setText("KEY " + QString::fromStdString(info.keySignature.value_or("--")));
        tracksLabel_->setText(QString::number(info.displayTrackCount) + " Tracks");
        lengthLabel_->setText("LENGTH " + formatted(player_.duration()));
    } catch (const std::exception& error) {
        playbackFailed(error.what());
    }
}

void MainViewController::openFile() {
    log_.userAction("Clicked Open MIDI File menu item", "MainViewController.openFile");
    QStringList patterns;
    for (const std::string_view extension : TambrelMIDIFileSupport::loadableExtensions())
        patterns << "*." + QString::fromUtf8(extension.data(), static_cast<qsizetype>(extension.size()));
    const QString file =
        QFileDialog::getOpenFileName(this, "Open MIDI File", {}, "MIDI files (" + patterns.join(' ') + ")");
    if (!file.isEmpty())
        load(file.toStdString());
}

void MainViewController::playPause() {
    log_.userAction("Clicked Play/Pause button or menu item", "TambrelTransportCoordinator.playPause");
    player_.togglePlayPause();
}

void MainViewController::stop() {
    log_.userAction("Clicked Stop button or menu item", "TambrelTransportCoordinator.stop");
    player_.stop();
}

void MainViewController::rtz() {
    log_.userAction("Clicked RTZ button or menu item", "TambrelTransportCoordinator.rtz");
    player_.rtz();
}

void MainViewController::playbackFailed(const std::string& reason) {
    log_.procedure("MainViewController.load(url:)",
                   [&] { return "Could not prepare MIDI playback: " + reason; });
    player_.unload();
    resetInterface("Could not prepare MIDI playback.", "Playback Error");
    fileLabel_->setToolTip(QString::fromStdString(reason));
    QApplication::beep();
}

void MainViewController::showProgress(double position, double) {
    progressLabel_->setText("PROGRESS " + formatted(position));
    if (!timeline_->isSliderDown())
        timeline_->setValue(static_cast<int>(position * sliderStepsPerSecond));
}

void MainViewController::showMode(PlaybackMode mode) {
    const bool isPaused = mode == PlaybackMode::paused;
    playPauseButton_->setText(mode == PlaybackMode::playing ? "Pause" : isPaused ? "Resume" : "Play");
}

void MainViewController::resetInterface(const QString& fileText, const QString& statusText) {
    statusLabel_->setText(statusText);
    fileLabel_->setText(fileText);
    fileLabel_->setToolTip({});
    tempoLabel_->setText("---.--- BPS");
    keyLabel_->setText("KEY --");
    tracksLabel_->setText("0 Tracks");
    lengthLabel_->setText("LENGTH 00:00:00.00");
    progressLabel_->setText("PROGRESS 00:00:00.00");
}

} // namespace tambrel
