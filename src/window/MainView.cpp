#include "MainView.h"

#include "Announcer.h"
#include "BlackLEDActivityView.h"
#include "DropTargetPanel.h"
#include "FramedZone.h"
#include "LoadedBlueRectangleView.h"
#include "MIDITrackBarsView.h"
#include "MainViewLayout.h"
#include "NameChangeTeller.h"
#include "PictureView.h"
#include "QtText.h"
#include "RetroButton.h"
#include "RetroLabel.h"
#include "RetroTheme.h"
#include "RetroTimelineView.h"
#include "SevenSegmentCounterView.h"
#include "SongSession.h"
#include "TambrelTransportCoordinator.h"
#include "TimeText.h"
#include "ViewAccessibility.h"

#include <QPalette>
#include <QUrl>

#include <array>
#include <utility>

namespace tambrel {
namespace {

constexpr const char* noTime = "00:00:00.00";
constexpr const char* noProgress = "PROGRESS 00:00:00.00";

template<class View, class... Arguments>
View* addView(QWidget* parent, const char* name, const QRect& place, Arguments&&... arguments) {
    auto* view = new View(std::forward<Arguments>(arguments)..., parent);
    view->setObjectName(name);
    view->setGeometry(place);
    return view;
}

RetroLabel* addLabel(QWidget* parent, const char* name, const QRect& place, const QString& text,
                     const QFont& font = RetroTheme::display(), Qt::Alignment alignment = Qt::AlignCenter) {
    return addView<RetroLabel>(parent, name, place, text, font, alignment);
}

} // namespace

MainView::MainView(MainViewActions actions) : actions_(std::move(actions)) {
    setObjectName("view");
    setFixedSize(MainViewLayout::contentSize, MainViewLayout::contentSize);
    QPalette paper = palette();
    paper.setColor(QPalette::Window, RetroTheme::paper());
    setPalette(paper);
    setAutoFillBackground(true);
    buildInterface();
    show(MainViewFacts());
}

// The order of the children is the order in which Tab and assistive software go through them.
void MainView::buildInterface() {
    namespace Layout = MainViewLayout;
    addLabel(this, "titleLabel", Layout::title, "TAMBREL", RetroTheme::title(), Qt::AlignLeft);
    addView<FramedZone>(this, "statusZone", Layout::statusZone);
    statusLabel_ = addLabel(this, "statusLabel", Layout::status, {});
    addView<FramedZone>(this, "ledZone", Layout::ledZone);
    activityView_ = addView<BlackLEDActivityView>(this, "activityView", Layout::activity);
    dropPanel_ = addView<DropTargetPanel>(this, "dropPanel", Layout::dropPanel);
    fileLabel_ = addLabel(dropPanel_, "fileLabel", Layout::file.translated(-Layout::dropPanel.topLeft()), {},
                          RetroTheme::songName());
    fileLabel_->setOverflow(RetroLabelOverflow::shrinkThenTruncate);
    buildExplanation();
    addView<FramedZone>(this, "displayZone", Layout::display, Layout::displayDivider);
    counterView_ = addView<SevenSegmentCounterView>(this, "counterView", Layout::counter);
    moduleZone_ = addView<LoadedBlueRectangleView>(this, "moduleZone", Layout::moduleZone);
    makeAccessible<PictureView, AccessibleView<QAccessible::Graphic>>();
    logoView_ = addView<PictureView>(this, "logoView", Layout::logo, QString(":/MIDI_LOGO.svg"));
    logoView_->setAccessibleName("MIDI logo");
    buildLabels();
    timeline_ = addView<RetroTimelineView>(this, "timeline", Layout::timeline);
    trackBarsView_ = addView<MIDITrackBarsView>(this, "trackBarsView", Layout::trackBars);
    buildButtons();
    announcer_ = new Announcer(this);
    announcer_->setObjectName("announcer");
    timeTeller_ = new NameChangeTeller(this);
    wireViews();
}

void MainView::buildExplanation() {
    namespace Layout = MainViewLayout;
    explanationLabel_ = addView<RetroLabel>(dropPanel_, "explanationLabel",
                                            Layout::explanation.translated(-Layout::dropPanel.topLeft()),
                                            QString(), RetroTheme::small(), Qt::AlignHCenter | Qt::AlignTop);
    explanationLabel_->setOverflow(RetroLabelOverflow::wrapThenTruncate);
    explanationLabel_->hide();
    statusLabel_->onExplanation = [this](const QString&) { showExplanation(); };
}

// Explains every status below the file's label, without repeating what that says.
void MainView::showExplanation() {
    namespace Layout = MainViewLayout;
    const QString ofStatus = statusLabel_->accessibleDescription();
    const QString explanation = ofStatus.isEmpty() ? notice_ : ofStatus;
    const bool isThere = !explanation.isEmpty();
    QString said = fileLabel_->text();
    said.chop(1); // The full stop.
    said += ": ";
    explanationLabel_->setText(explanation.startsWith(said) ? explanation.sliced(said.size()) : explanation);
    explanationLabel_->setVisible(isThere);
    fileLabel_->setGeometry(
        (isThere ? Layout::explainedFile : Layout::file).translated(-Layout::dropPanel.topLeft()));
}

void MainView::buildLabels() {
    namespace Layout = MainViewLayout;
    gmModuleLabel_ = addLabel(this, "gmModuleLabel", Layout::gmModule, "GM Module", RetroTheme::module());
    tempoLabel_ = addLabel(this, "tempoLabel", Layout::tempo, {});
    keyLabel_ = addLabel(this, "keyLabel", Layout::key, {});
    tracksLabel_ = addLabel(this, "tracksLabel", Layout::tracks, {});
    lengthLabel_ = addLabel(this, "lengthLabel", Layout::length, {});
    progressLabel_ = addLabel(this, "progressLabel", Layout::progress, {});
}

void MainView::buildButtons() {
    struct Row {
        const char* name;
        const char* title;
        const std::function<void()>& action;
        const char* purpose;
        QKeySequence key = {}; ///< In the menus.
    };
    const std::array<Row, MainViewLayout::buttons.size()> rows{{
        {"playPauseButton", "Play", actions_.playPause, "Plays, pauses and goes on", Qt::Key_Space},
        {"stopButton", "Stop", actions_.stop, "Stops and returns to zero", Qt::CTRL | Qt::Key_Period},
        {"rtzButton", "RTZ", actions_.rtz, "Return to Zero", Qt::CTRL | Qt::Key_R},
        {"loudnessButton", "Loudness", actions_.toggleLoudness, "Raises drums and bass to full velocity"},
        {"clearButton", "Clear", actions_.clear, "Takes the song out of the player"},
    }};
    std::array<RetroButton*, rows.size()> buttons{};
    for (std::size_t at = 0; at < rows.size(); ++at) {
        buttons[at] = addView<RetroButton>(this, rows[at].name, MainViewLayout::buttons[at], rows[at].title,
                                           rows[at].action);
        buttons[at]->setAutoDefault(true); // Return presses it, and not the space bar alone.
        buttons[at]->explain(rows[at].purpose, rows[at].key, "Pause or stop the song first");
    }
    playPauseButton_ = buttons[0];
    loudnessButton_ = buttons[3];
}

void MainView::wireViews() {
    timeline_->onSeek = actions_.seek;
    dropPanel_->onFile = actions_.open;
    timeline_->onUserAction = dropPanel_->onUserAction = actions_.log;
    counterView_->onTextChange = [this] { timeTeller_->noteChange(*counterView_); };
    progressLabel_->onTextChange = [this] { timeTeller_->noteChange(*progressLabel_); };
    progressLabel_->setAccessibleName("Progress");
}

void MainView::show(const MainViewFacts& facts) {
    dropPanel_->setLoaded(facts.isLoaded);
    moduleZone_->setLoaded(facts.isLoaded);
    logoView_->setVisible(facts.isLoaded);
    gmModuleLabel_->setVisible(facts.isLoaded);
    showTexts(facts);
    counterView_->setText(noTime);
    timeline_->setDuration(facts.duration);
    timeline_->setPosition(0);
    trackBarsView_->setTrackCount(facts.trackCount);
    trackBarsView_->setLanes(facts.lanes);
    trackBarsView_->setProgress(0);
    activityView_->setAnimating(false);
    playPauseButton_->setText("Play");
    loudnessButton_->setEnabled(true);
}

void MainView::showTexts(const MainViewFacts& facts) {
    fileLabel_->setText(facts.file);
    showStatus(facts.status, facts.explanation);
    tempoLabel_->setText(facts.tempo);
    keyLabel_->setText(facts.key);
    tracksLabel_->setText(QString::number(facts.trackCount) + " Tracks");
    lengthLabel_->setText("LENGTH " + toQString(timeText(facts.duration)));
    progressLabel_->setText(noProgress);
}

void MainView::showLoading() {
    showStatus("Loading", {});
    activityView_->setAnimating(true);
}

void MainView::explainStatus(const QString& explanation) {
    showStatus(statusLabel_->text(), explanation);
}

void MainView::showNotice(const QString& notice) {
    notice_ = notice;
    showExplanation();
}

void MainView::say(const QString& text) {
    announcer_->say(text);
}

void MainView::showStatus(const QString& title, const QString& explanation) {
    statusLabel_->setText(title, explanation);
}

TransportControls MainView::transportControls(SongSession& session, std::function<void()> beep) const {
    return {.player = session.player(),
            .playbackState = session.playbackState(),
            .counterView = *counterView_,
            .progressLabel = *progressLabel_,
            .statusLabel = *statusLabel_,
            .timeline = *timeline_,
            .trackBarsView = *trackBarsView_,
            .activityView = *activityView_,
            .playPauseButton = *playPauseButton_,
            .loudnessButton = *loudnessButton_,
            .beep = std::move(beep),
            .preparation = &session.preparation()};
}

} // namespace tambrel
