#include "TambrelBetaLogStore.h"

#include <QByteArrayView>
#include <QFile>
#include <QLatin1String>
#include <QSaveFile>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tambrel {
namespace {

[[noreturn]] void fail(const QFileDevice& file) {
    throw TambrelBetaLogStoreError(file.errorString().toStdString());
}

void writeAll(QFileDevice& file, std::string_view text) {
    while (!text.empty()) { // After a short write, to write the rest tells what went wrong.
        const auto written = file.write(text.data(), static_cast<qint64>(text.size()));
        if (written <= 0)
            fail(file);
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

// Half a line, or half a letter, would spoil every report from then on.
void writeAllOrNothing(QFileDevice& file, std::string_view text) {
    const qint64 size = file.size();
    try {
        writeAll(file, text);
    } catch (const TambrelBetaLogStoreError&) {
        file.resize(size);
        throw;
    }
}

void writeAtomically(const QString& path, std::string_view text) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) // A commit does not report a full disk.
        fail(file);
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    writeAll(file, text);
    if (!file.commit())
        fail(file);
}

// The log names the user's files and describes the computer. Where the folder is another user's, this fails.
void closeToOthers(const QString& folder) {
    using std::filesystem::perms;
    std::error_code ignored;
    std::filesystem::permissions(QFile::encodeName(folder).toStdString(),
                                 perms::group_all | perms::others_all, std::filesystem::perm_options::remove,
                                 ignored);
}

void createFolder(const QString& path) {
    // QDir::mkpath would not tell what went wrong.
    std::error_code error;
    if (std::filesystem::create_directories(QFile::encodeName(path).toStdString(), error))
        closeToOthers(path);
    if (error)
        throw TambrelBetaLogStoreError(error.message());
}

/// Locks the folder against other runs, which wait. Where flock is not supported, nobody waits.
class FolderLock {
public:
    explicit FolderLock(const QString& path)
        : descriptor_(open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        while (flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~FolderLock() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    int descriptor_;
};

template<class Work>
std::optional<std::string> failureOf(Work work) {
    try {
        work();
        return std::nullopt;
    } catch (const TambrelBetaLogStoreError& error) {
        return error.what();
    } catch (const std::system_error& error) {
        return error.code().message();
    }
}

QString inFolder(const QString& folder, std::string_view name) {
    return folder + u'/' + QLatin1String(name.data(), static_cast<qsizetype>(name.size()));
}

} // namespace

TambrelBetaLogStore::TambrelBetaLogStore(const QString& folder, SystemProfiler profiler)
    : folder_(folder), logPath_(inFolder(folder, logName)), marker_(folder), profiler_(std::move(profiler)) {}

void TambrelBetaLogStore::ensureLogFileExists(std::string_view initialLogText) const {
    createFolder(folder_);
    if (QFile::exists(logPath_))
        return;
    const FolderLock lock(folder_);
    if (!QFile::exists(logPath_)) // Else another run has made it meanwhile.
        writeAtomically(logPath_, initialLogText);
}

void TambrelBetaLogStore::appendLine(std::string_view line) const {
    QFile file(logPath_);
    // Unbuffered, so that a full disk shows in the write and not in the close, whose failure nobody sees.
    if (!file.open(QIODevice::Append | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        fail(file);
    if (QByteArrayView(line).isValidUtf8())
        writeAllOrNothing(file, line);
}

std::optional<std::string> TambrelBetaLogStore::writeEntry(std::string_view initialLogText,
                                                           std::string_view line) const {
    return failureOf([&] {
        ensureLogFileExists(initialLogText);
        appendLine(line);
    });
}

TambrelBetaLogStore::StartResult TambrelBetaLogStore::startSession(std::string_view initialLogText,
                                                                   std::string_view markerText,
                                                                   std::string_view startLine) {
    const bool wasActive = marker_.takeLeftBehind();
    previousIsUnsettled_ |= wasActive;
    return {wasActive, failureOf([&] {
                ensureLogFileExists(initialLogText);
                closeToOthers(folder_); // Earlier versions let others in.
                marker_.write(markerText);
                appendLine(startLine);
            })};
}

void TambrelBetaLogStore::settlePreviousSession() {
    previousIsUnsettled_ = false;
}

void TambrelBetaLogStore::finishSession() {
    if (!previousIsUnsettled_)
        marker_.remove();
}

std::optional<std::string> TambrelBetaLogStore::logText() const {
    QFile file(logPath_);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray text = file.readAll();
    if (file.error() != QFileDevice::NoError || !text.isValidUtf8())
        return std::nullopt;
    return text.toStdString();
}

std::string TambrelBetaLogStore::macintoshInfoReport(std::string_view collectedAt) const {
    return std::string("Macintosh Info:\nCollected: ").append(collectedAt).append("\n\n") +
           profiler_.report();
}

TambrelBetaLogAttachmentWriteResult
TambrelBetaLogStore::writeEmailReportAttachment(std::string_view body, std::string_view timestamp) const {
    const QString path = inFolder(folder_, std::string("Tambrel-beta-report-").append(timestamp) + ".txt");
    auto failure = failureOf([&] {
        createFolder(folder_);
        writeAtomically(path, body);
    });
    if (failure)
        return {.errorMessage = std::move(failure)};
    return {.url = QUrl::fromLocalFile(path)};
}

std::optional<QUrl> TambrelBetaLogStore::revealableLogURL(bool fileLoggingEnabled) const {
    if (!fileLoggingEnabled || !QFile::exists(logPath_))
        return std::nullopt;
    return QUrl::fromLocalFile(logPath_);
}

} // namespace tambrel
