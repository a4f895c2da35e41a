#include "TambrelAboutPanel.h"

#include "QtText.h"
#include "RetroButton.h"
#include "RetroLabel.h"
#include "RetroTheme.h"

#include <QApplication>
#include <QFile>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include <cmath>

namespace tambrel {
namespace {

constexpr int textWidth = 456;
constexpr int iconSize = 64;
constexpr int spacing = 8;
constexpr int margin = 12;

QString versionText(const ApplicationInfo& info) {
    const std::string unknown = "unknown";
    return toQString("Version " + info.shortVersion.value_or(unknown) + ", build " +
                     info.build.value_or(unknown) + "\nKestrune Software, MIT licence");
}

// The lines of the file are joined to paragraphs, which are wrapped to the panel's width.
QString licenceText() {
    QFile file(":/LICENSE");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList paragraphs = QString::fromUtf8(file.readAll()).trimmed().split("\n\n");
    for (QString& paragraph : paragraphs)
        paragraph.replace('\n', ' ');
    return paragraphs.join("\n\n");
}

// A text to be read, selected and copied, by keyboard too; it shows so many lines, and scrolls when it has
// more.
QPlainTextEdit* addText(QWidget& panel, const char* name, const QString& text, int lines) {
    auto* view = new QPlainTextEdit(text, &panel);
    view->setObjectName(name);
    view->setAccessibleName(name);
    view->setReadOnly(true);
    view->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    view->setTabChangesFocus(true);
    view->setFont(RetroTheme::display());
    view->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setStyleSheet(
        "QPlainTextEdit { border: 1px solid black; padding: 1px; background: " + RetroTheme::panel().name() +
        "; } QPlainTextEdit:focus { border: 2px solid black; padding: 0; }");
    const double around = 2 * (2 + view->document()->documentMargin()); // With border and padding.
    const double lineHeight = QFontMetricsF(view->font()).lineSpacing();
    view->setFixedSize(textWidth, static_cast<int>(std::ceil(lines * lineHeight + around + 1)));
    return view;
}

void addCaptioned(QVBoxLayout& column, QWidget& panel, const char* caption, QPlainTextEdit* text) {
    column.addWidget(new RetroLabel(caption, RetroTheme::display(), Qt::AlignLeft, &panel));
    column.addWidget(text);
}

} // namespace

TambrelAboutPanel::TambrelAboutPanel(QWidget& owner, const AboutFacts& facts) : QDialog(&owner) {
    setObjectName("aboutPanel");
    setWindowTitle("About Tambrel");
    setAttribute(Qt::WA_DeleteOnClose);

    auto* icon = new QLabel(this);
    icon->setPixmap(QApplication::windowIcon().pixmap(iconSize));
    icon->setAccessibleName("Tambrel icon");
    icon->setVisible(!icon->pixmap().isNull());
    auto* title = new RetroLabel("TAMBREL", RetroTheme::songName(), Qt::AlignLeft, this);
    auto* heading = new QHBoxLayout;
    heading->setSpacing(margin);
    heading->addWidget(icon);
    heading->addWidget(title, 1);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(spacing);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addLayout(heading);
    column->addWidget(addText(*this, "Version", versionText(facts.info), 2));
    addCaptioned(*column, *this, "BUILT ON", addText(*this, "Built on", toQString(facts.builtOn), 1));
    addCaptioned(*column, *this, "SOUND BANK", addText(*this, "Sound bank", toQString(facts.soundBank), 2));
    addCaptioned(*column, *this, "LICENCE", addText(*this, "Licence", licenceText(), 8));
    auto* close = new RetroButton(
        "Close", [this] { reject(); }, this);
    close->setFixedSize(85, 34);
    close->setDefault(true);
    column->addWidget(close, 0, Qt::AlignRight);
    close->setFocus();
}

void TambrelAboutPanel::show(QWidget& owner, const AboutFacts& facts) {
    delete owner.findChild<QDialog*>("aboutPanel", Qt::FindDirectChildrenOnly);
    QDialog* panel = new TambrelAboutPanel(owner, facts);
    panel->setVisible(true);
    panel->raise();
    panel->activateWindow();
}

} // namespace tambrel
