// A user for a program that a test starts. Each line on the standard input stream is something to do; the
// answer on the standard output stream is what there was to see of it, then "done" and what the window shows,
// when everything that follows from it has happened and is in the log.

#include "TambrelBetaLog.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTest>
#include <QTimer>

#include <iostream>
#include <unistd.h>
#include <utility>

namespace {

/// The first visible one of this name or title.
template<class Widget>
Widget* find(const QString& name = {}) {
    for (QWidget* widget : QApplication::allWidgets()) {
        auto* found = qobject_cast<Widget*>(widget);
        const auto* button = qobject_cast<QAbstractButton*>(widget);
        if (found && widget->isVisible() &&
            (name.isEmpty() || widget->objectName() == name || (button && button->text() == name)))
            return found;
    }
    return nullptr;
}

class DrivingUser : public QObject {
    Q_OBJECT

public:
    explicit DrivingUser(QObject* parent) : QObject(parent) {
        QDesktopServices::setUrlHandler("mailto", this, "openLink");
        QDesktopServices::setUrlHandler("file", this, "openLink");
        connect(&commands_, &QSocketNotifier::activated, this, [this] { read(); });
        waiting_.callOnTimeout([this] { proceed(); });
    }

    ~DrivingUser() override {
        QDesktopServices::unsetUrlHandler("mailto");
        QDesktopServices::unsetUrlHandler("file");
    }
    DrivingUser(const DrivingUser&) = delete;
    DrivingUser& operator=(const DrivingUser&) = delete;

    Q_SLOT void openLink(const QUrl& url) { links_ << url.toEncoded(); }

private:
    static void say(const QString& text) { std::cout << text.toStdString() << std::endl; }

    void read() {
        char letter = 0;
        QByteArray line;
        while (::read(STDIN_FILENO, &letter, 1) == 1 && letter != '\n')
            line += letter;
        const auto end = line.indexOf(' ');
        verb_ = end < 0 ? line : line.left(end);
        words_ = end < 0 ? QString() : QString::fromUtf8(line.mid(end + 1));
        hasBegun_ = false;
        settledPasses_ = 0;
        waiting_.start(1);
    }

    // What is done may open a question, in an event loop of its own, from which the program goes on only
    // after the pass in which it is answered.
    void proceed() {
        if (!verb_.isEmpty()) {
            if (isPossible(verb_))
                QTimer::singleShot(0, this, [this, verb = std::exchange(verb_, {})] {
                    hasBegun_ = true;
                    waitsForTheEnd_ = verb == "playout";
                    act(verb, words_);
                });
            return;
        }
        // What the log's thread has done comes back in between, and may have more done.
        constexpr int passes = 3;
        constexpr int rounds = 3;
        settledPasses_ = hasBegun_ && isSettled() ? settledPasses_ + 1 : 0;
        if (settledPasses_ % passes == passes - 1)
            tambrel::TambrelBetaLog::shared().waitUntilWritten();
        if (settledPasses_ < passes * rounds)
            return;
        waiting_.stop();
        say("done " + shown());
    }

    bool isPossible(const QByteArray& verb) const {
        if (verb == "answer")
            return find<QMessageBox>();
        if (verb == "link")
            return !links_.isEmpty();
        return verb == "choose" ? find<QFileDialog>() != nullptr : find<QWidget>("view") != nullptr;
    }

    bool isSettled() const {
        const auto* status = find<QLabel>("statusLabel");
        return QApplication::activeModalWidget() ||
               (status && status->text() != "Loading" && (!waitsForTheEnd_ || find<QPushButton>("Play")));
    }

    static QString shown() {
        if (const auto* open = QApplication::activeModalWidget())
            return "open: " + open->windowTitle();
        QStringList texts;
        for (const char* label : {"statusLabel", "fileLabel"})
            texts << find<QLabel>(label)->text();
        for (const char* button : {"playPauseButton", "loudnessButton"})
            texts << find<QPushButton>(button)->text();
        return texts.join(" | ");
    }

    void act(const QByteArray& verb, const QString& words) {
        if (verb == "answer")
            answer(*find<QMessageBox>(), words);
        else if (verb == "choose")
            choose(*find<QFileDialog>(), words);
        else if (verb == "click" || verb == "playout")
            QTest::mouseClick(find<QAbstractButton>(verb == "click" ? words : "Play"), Qt::LeftButton);
        else if (verb == "press")
            press(*find<QWidget>("view")->window(), words);
        else if (verb == "seek")
            seek(*find<QWidget>("timeline"), words.toDouble());
        else if (verb == "drop")
            drop(*find<QWidget>("dropPanel"), words);
        else if (verb == "paste")
            say(QApplication::clipboard()->text());
        else if (verb == "link")
            say(QByteArray::fromPercentEncoding(links_.takeFirst()).replace("\r\n", "\n"));
        else if (verb == "read")
            say(find<QPlainTextEdit>()->toPlainText());
    }

    static void answer(QMessageBox& box, const QString& words) {
        QStringList texts{box.text(), box.informativeText()};
        for (const auto* button : box.buttons())
            texts << (button == box.defaultButton() ? "[" + button->text() + "]" : button->text());
        say(texts.join("\n"));
        if (auto* button = words.isEmpty() ? nullptr : find<QPushButton>(words))
            QTest::mouseClick(button, Qt::LeftButton);
        else if (!words.isEmpty())
            QTest::keySequence(&box, QKeySequence(words));
    }

    static void press(QWidget& window, const QString& keys) {
        window.activateWindow();
        if (QTest::qWaitForWindowActive(&window))
            QTest::keySequence(&window, QKeySequence(keys));
    }

    static void choose(QFileDialog& panel, const QString& file) {
        say(panel.windowTitle() + ": " + panel.nameFilters().join(", ") + " in " + panel.directory().path());
        if (file.isEmpty())
            return panel.reject();
        panel.findChild<QLineEdit*>()->setText(file);
        static_cast<QDialog&>(panel).accept();
    }

    static void seek(QWidget& timeline, double fraction) {
        const double margin = 12;
        const int x = static_cast<int>(margin + fraction * (timeline.width() - 2 * margin));
        QTest::mouseClick(&timeline, Qt::LeftButton, {}, {x, timeline.height() / 2});
    }

    static void drop(QWidget& panel, const QString& address) {
        QMimeData dragged;
        dragged.setUrls({QUrl(address)});
        const QPoint place = panel.mapTo(panel.window(), panel.rect().center());
        QDragEnterEvent enter(place, Qt::CopyAction, &dragged, Qt::LeftButton, {});
        QCoreApplication::sendEvent(panel.window()->windowHandle(), &enter);
        QDropEvent event(place, Qt::CopyAction, &dragged, Qt::LeftButton, {});
        QCoreApplication::sendEvent(panel.window()->windowHandle(), &event);
        say(event.isAccepted() ? "taken" : "not taken");
    }

    QSocketNotifier commands_{STDIN_FILENO, QSocketNotifier::Read};
    QTimer waiting_;
    QByteArray verb_; ///< Empty once it is to be carried out.
    bool hasBegun_ = false;
    bool waitsForTheEnd_ = false; ///< Of the song.
    int settledPasses_ = 0;
    QList<QByteArray> links_; ///< That the program has had opened.
    QString words_;
};

void attend() {
    QMetaObject::invokeMethod(
        qApp, [] { new DrivingUser(qApp); }, Qt::QueuedConnection);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(attend)

#include "DrivingUser.moc"
