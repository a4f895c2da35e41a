#pragma once

#include <QUrl>

#include <filesystem>

namespace tambrel {

/// The file that a file: address names, byte by byte: file names need be no UTF-8.
[[nodiscard]] inline std::filesystem::path localPath(const QUrl& url) {
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

/// The file: address of a file, percent-encoded; the reverse.
[[nodiscard]] inline QByteArray fileAddress(const std::filesystem::path& path) {
    const std::string bytes = std::filesystem::absolute(path).string();
    return "file://" + QByteArray::fromStdString(bytes).toPercentEncoding("/");
}

} // namespace tambrel
