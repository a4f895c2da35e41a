#include "TambrelAboutPanel.h"

#include "InfoTexts.h"
#include "PictureView.h"
#include "QtText.h"
#include "RetroButton.h"
#include "RetroLabel.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tambrel {
namespace {

constexpr QSize usualSize{480, 440};
constexpr QSize leastSize{360, 300};
constexpr int pictureSize = 56;
constexpr int spacing = 8;
constexpr int margin = 12;

// In the words of a style sheet: Qt 6.8 forgets a font that is set on a tab bar with a style sheet.
QString inWords(const QFont& font) {
    return QString("font: %1 %2px '%3'; letter-spacing: %4px;")
        .arg(font.weight())
        .arg(font.pixelSize())
        .arg(font.family())
        .arg(font.letterSpacing());
}

// The look of the main window: a page that is shown is inverted, like an open menu.
QString lookOfPages() {
    return QString("QTabWidget::pane { border: 1px solid black; top: -1px; background: %1; } "
                   "QTabBar::tab { border: 1px solid black; padding: 5px 14px; margin-right: -1px; "
                   "background: %2; color: black; } "
                   "QTabBar::tab:last { margin-right: 0; } "
                   "QTabBar::tab:selected { background: black; color: %2; } "
                   "QTabBar::tab:selected:focus { text-decoration: underline; } "
                   "QTabBar { %3 }")
        .arg(RetroTheme::paper().name(), RetroTheme::panel().name(), inWords(RetroTheme::display()));
}

QLayout* heading(QWidget& page, const ApplicationInfo& info) {
    auto* icon = new QLabel(&page);
    icon->setPixmap(QApplication::windowIcon().pixmap(pictureSize));
    icon->setAccessibleName("Tambrel icon");
    icon->setVisible(!icon->pixmap().isNull());
    auto* logo = new PictureView(":/KESTRUNE_LOGO.svg", &page);
    logo->setAccessibleName("Kestrune Software logo");
    logo->setFixedSize(pictureSize, pictureSize);
    auto* texts = new QVBoxLayout;
    texts->addWidget(new RetroLabel("TAMBREL", RetroTheme::songName(), Qt::AlignLeft, &page));
    texts->addWidget(new RetroLabel(versionText(info), RetroTheme::display(), Qt::AlignLeft, &page));
    auto* row = new QHBoxLayout;
    row->setSpacing(margin);
    row->addWidget(icon);
    row->addLayout(texts, 1);
    row->addWidget(logo);
    return row;
}

QWidget* programPage(const AboutFacts& facts) {
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->addLayout(heading(*page, facts.info));
    auto* credits = new WholeLinesText("Credits", creditsText(toQString(facts.builtOn)), page);
    credits->setFixedLines(3);
    column->addWidget(credits);
    column->addWidget(new WholeLinesText("Licence", licenceText(), page), 1);
    return page;
}

QWidget* pageOf(QWidget* content) {
    auto* page = new QWidget;
    (new QVBoxLayout(page))->addWidget(content);
    return page;
}

} // namespace

TambrelAboutPanel::TambrelAboutPanel(QWidget& owner, const AboutFacts& facts, InfoPage page)
    : QDialog(&owner) {
    setObjectName("aboutPanel");
    setWindowTitle("About Tambrel");
    setAttribute(Qt::WA_DeleteOnClose);
    setMinimumSize(leastSize);
    resize(usualSize);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(spacing);
    auto* pages = makePages(facts, page);
    column->addWidget(pages, 1);
    auto* close = new RetroButton(
        "Close", [this] { reject(); }, this);
    close->explain("Closes the panel", Qt::Key_Escape);
    close->setFixedSize(85, 34);
    close->setDefault(true);
    column->addWidget(close, 0, Qt::AlignRight);
    pages->tabBar()->setFocus();
}

QTabWidget* TambrelAboutPanel::makePages(const AboutFacts& facts, InfoPage page) {
    auto* pages = new QTabWidget(this);
    pages->setObjectName("pages");
    pages->setStyleSheet(lookOfPages());
    pages->tabBar()->setAccessibleName("Pages");
    songPage_ = new SongPage(facts.song);
    soundPage_ = new SoundPage(facts.sound);
    pages->addTab(pageOf(songPage_), "Song");
    pages->addTab(soundPage_, "Sound");
    pages->addTab(pageOf(new WholeLinesText("Keys", keysText())), "Keys");
    pages->addTab(programPage(facts), "Tambrel");
    pages->setCurrentIndex(static_cast<int>(page));
    return pages;
}

void TambrelAboutPanel::show(QWidget& owner, const AboutFacts& facts, InfoPage page) {
    delete of(owner);
    QDialog* panel = new TambrelAboutPanel(owner, facts, page);
    panel->setVisible(true);
    panel->raise();
    panel->activateWindow();
}

TambrelAboutPanel* TambrelAboutPanel::of(const QWidget& owner) {
    return dynamic_cast<TambrelAboutPanel*>(
        owner.findChild<QDialog*>("aboutPanel", Qt::FindDirectChildrenOnly));
}

} // namespace tambrel
