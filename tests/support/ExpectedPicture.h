#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QVersionNumber>

#include <cstdlib>

namespace tambrel {

/// How many pixels of the pictures differ by more than one step of 256 in a channel, by which processors
/// may round differently; all of them when the sizes do. Paints those pixels red in `difference`.
inline int differingPixels(const QImage& one, const QImage& other, QImage& difference) {
    if (one.size() != other.size())
        return one.width() * one.height();
    const auto near = [](int a, int b) { return std::abs(a - b) <= 1; };
    int count = 0;
    for (int y = 0; y < one.height(); ++y)
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            if (near(qRed(a), qRed(b)) && near(qGreen(a), qGreen(b)) && near(qBlue(a), qBlue(b)))
                continue;
            difference.setPixel(x, y, qRgb(255, 0, 0));
            ++count;
        }
    return count;
}

/// Succeeds when the picture is that of tests/expected/window/`name`.png. Else it writes the picture, and one
/// with red pixels where they differ, into the build tree, and names both.
///
/// Qt does not draw the same in every version: the pictures are those of Qt 6.4, and where another version
/// draws differently it has its own in a folder of its number. Where TAMBREL_ACCEPT_EXPECTED is set, a
/// picture that differs becomes this version's.
[[nodiscard]] inline ::testing::AssertionResult isExpected(const QImage& received, const QString& name) {
    const auto version = QVersionNumber::fromString(qVersion());
    const QString number = QString("%1.%2").arg(version.majorVersion()).arg(version.minorVersion());
    const QDir folder(TAMBREL_EXPECTED_TEXTS "/window");
    const QString own = (number == "6.4" ? "" : number + "/") + name + ".png";
    const QString kept = folder.exists(own) ? own : name + ".png";

    const QImage picture = received.convertToFormat(QImage::Format_RGB32);
    const QImage expected = QImage(folder.filePath(kept)).convertToFormat(QImage::Format_RGB32);
    QImage difference =
        picture.convertToFormat(QImage::Format_Grayscale8).convertToFormat(QImage::Format_RGB32);
    const int count = differingPixels(picture, expected, difference);
    if (count == 0)
        return ::testing::AssertionSuccess();
    if (std::getenv("TAMBREL_ACCEPT_EXPECTED") != nullptr) {
        folder.mkpath(QFileInfo(own).path());
        EXPECT_TRUE(picture.save(folder.filePath(own), "png", 0)) << own.toStdString();
        return ::testing::AssertionSuccess();
    }
    const QDir build(TAMBREL_DIFFERENCES);
    build.mkpath(".");
    const QString seen = build.filePath(name + ".png");
    const QString red = build.filePath(name + "-difference.png");
    EXPECT_TRUE(picture.save(seen) && difference.save(red)) << seen.toStdString();
    auto failure = ::testing::AssertionFailure() << "tests/expected/window/" << kept.toStdString();
    if (expected.isNull())
        failure << " is missing.";
    else
        failure << " differs from what Qt " << qVersion() << " has drawn, in " << count << " pixels.";
    return failure << "\n  drawn:      " << seen.toStdString() << "\n  difference: " << red.toStdString()
                   << "\nIf this is right, scripts/accept-expected keeps it as tests/expected/window/"
                   << own.toStdString();
}

} // namespace tambrel
