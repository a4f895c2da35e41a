#pragma once

#include <QString>
#include <QSysInfo>
#include <QUrl>

#include <filesystem>
#include <system_error>

namespace tambrel {

/// The file of this computer that a file: address names, byte by byte: file names need be no UTF-8. Empty for
/// any other address, one that names another host or no absolute path among them.
[[nodiscard]] inline std::filesystem::path localPath(const QUrl& url) {
    const QString host = url.host();
    const bool isHere = host.isEmpty() || host == "localhost" ||
                        host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
    if (!url.isLocalFile() || !isHere || !url.path().startsWith('/'))
        return {};
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

/// The file: address of a file, which may be named relative to the working directory.
[[nodiscard]] inline QString fileURI(const std::filesystem::path& file) {
    std::error_code noWorkingDirectory;
    const std::filesystem::path whole = std::filesystem::absolute(file, noWorkingDirectory);
    return "file://" + QString::fromLatin1(QByteArray::fromStdString(whole.string()).toPercentEncoding("/"));
}

} // namespace tambrel
