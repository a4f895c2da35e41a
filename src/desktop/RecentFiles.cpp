#include "RecentFiles.h"

#include "NewFile.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <memory>
#include <system_error>
#include <utility>

#include <sys/stat.h>

namespace tambrel {
namespace {

constexpr const char* program = "Tambrel";
constexpr const char* bookmarks = "http://www.freedesktop.org/standards/desktop-bookmarks";
constexpr const char* mimeTypes = "http://www.freedesktop.org/standards/shared-mime-info";
constexpr const char* emptyList = R"(<?xml version="1.0" encoding="UTF-8"?>
<xbel version="1.0" xmlns:bookmark="http://www.freedesktop.org/standards/desktop-bookmarks"
      xmlns:mime="http://www.freedesktop.org/standards/shared-mime-info">
</xbel>
)";

/// Copies a list and enters a file on the way.
class Copy {
public:
    Copy(const QByteArray& list, RecentFile file, const QDateTime& now)
        : from_(list), file_(std::move(file)), now_(now.toUTC().toString(Qt::ISODate)) {}

    /// Empty when the list is none.
    [[nodiscard]] QByteArray make() {
        while (!from_.atEnd()) {
            from_.readNext();
            if (from_.isStartElement())
                begin();
            else if (from_.isEndElement())
                end();
            else
                to_.writeCurrentToken(from_);
        }
        return from_.hasError() ? QByteArray() : result_;
    }

private:
    void begin() {
        ++depth_;
        if (depth_ == 1 && from_.name() != u"xbel")
            from_.raiseError();
        isInside_ = isInside_ || (depth_ == 2 && from_.name() == u"bookmark" &&
                                  from_.attributes().value("href") == file_.address);
        if (isInside_ && is("application") && from_.attributes().value("name") == QLatin1String(program))
            skipOwn();
        else if (isInside_ && depth_ == 2)
            beginBookmark(from_.attributes().value("added").toString());
        else
            to_.writeCurrentToken(from_);
    }

    void end() {
        if (isInside_ && is("applications"))
            writeApplication();
        if (depth_ == 1 && !isEntered_)
            writeBookmark();
        isInside_ = isInside_ && depth_ > 2;
        --depth_;
        to_.writeCurrentToken(from_);
    }

    [[nodiscard]] bool is(const char* name) const {
        return from_.name() == QLatin1String(name) && from_.namespaceUri() == QLatin1String(bookmarks);
    }

    // It is written anew, after all others.
    void skipOwn() {
        count_ = from_.attributes().value("count").toInt();
        from_.skipCurrentElement();
        --depth_;
    }

    void beginBookmark(const QString& added) {
        to_.writeStartElement("bookmark");
        to_.writeAttribute("href", file_.address);
        to_.writeAttribute("added", added);
        to_.writeAttribute("modified", now_);
        to_.writeAttribute("visited", now_);
    }

    void writeApplication() {
        isEntered_ = true;
        to_.writeEmptyElement(bookmarks, "application");
        to_.writeAttribute("name", program);
        to_.writeAttribute("exec", "'tambrel %u'");
        to_.writeAttribute("modified", now_);
        to_.writeAttribute("count", QString::number(count_ + 1));
    }

    void writeBookmark() {
        beginBookmark(now_);
        to_.writeStartElement("info");
        to_.writeStartElement("metadata");
        to_.writeAttribute("owner", "http://freedesktop.org");
        to_.writeEmptyElement(mimeTypes, "mime-type");
        to_.writeAttribute("type", file_.mimeType);
        to_.writeStartElement(bookmarks, "applications");
        writeApplication();
        for (int elements = 0; elements < 4; ++elements)
            to_.writeEndElement();
        to_.writeCharacters("\n");
    }

    QXmlStreamReader from_;
    QByteArray result_;
    QXmlStreamWriter to_{&result_};
    const RecentFile file_;
    const QString now_;
    int depth_ = 0;         // Elements that are open.
    int count_ = 0;         // How often this program has opened the file before.
    bool isInside_ = false; // The file's bookmark.
    bool isEntered_ = false;
};

void enter(const RecentFile& file) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    QDir().mkpath(folder); // A new user has none yet.
    const QString path = folder + "/recently-used.xbel";
    QFile old(path);
    if (old.exists() && !old.open(QIODevice::ReadOnly))
        return;
    const QByteArray list = RecentFiles::withFile(old.isOpen() ? old.readAll() : QByteArray(), file,
                                                  QDateTime::currentDateTime());
    if (list.isEmpty())
        return;
    try {
        NewFile renewed(QFile::encodeName(path).toStdString());
        if (fchmod(renewed.descriptor(), S_IRUSR | S_IWUSR) != 0) // An older list keeps its mode.
            return;
        renewed.write(
            {reinterpret_cast<const unsigned char*>(list.data()), static_cast<std::size_t>(list.size())});
        renewed.keep(NewFile::Existing::replace);
    } catch (const std::system_error&) { // The desktop does without.
    }
}

} // namespace

void RecentFiles::add(const RecentFile& file) {
    if (!executor_)
        executor_ = std::make_unique<SerialExecutor>();
    executor_->run([file] { enter(file); });
}

QByteArray RecentFiles::withFile(const QByteArray& list, const RecentFile& file, const QDateTime& now) {
    return Copy(list.isEmpty() ? QByteArray(emptyList) : list, file, now).make();
}

} // namespace tambrel
