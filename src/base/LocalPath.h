#pragma once

#include <QString>
#include <QSysInfo>
#include <QUrl>

#include <filesystem>
#include <system_error>

namespace tambrel {

/// The path in a file: address of this computer, byte by byte: file names need not be UTF-8. Empty for any
/// other address, such as one of another host or without an absolute path. Any thread.
[[nodiscard]] inline std::filesystem::path localPath(const QUrl& url) {
    const QString host = url.host();
    const bool isHere = host.isEmpty() || host == "localhost" ||
                        host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
    if (!url.isLocalFile() || !isHere || !url.path().startsWith('/'))
        return {};
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

/// The file: address of a file, which may be named relative to the working directory. Any thread.
[[nodiscard]] inline QString fileURI(const std::filesystem::path& file) {
    std::error_code noWorkingDirectory;
    const std::filesystem::path whole = std::filesystem::absolute(file, noWorkingDirectory);
    return "file://" + QString::fromLatin1(QByteArray::fromStdString(whole.string()).toPercentEncoding("/"));
}

} // namespace tambrel
