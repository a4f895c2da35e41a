#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QVersionNumber>

#include <cstdlib>

namespace tambrel {

/// How many pixels of the pictures differ by more than `steps` of 256 in a channel; all of them when the
/// sizes do. Paints those pixels red in `difference`.
inline int differingPixels(const QImage& one, const QImage& other, int steps, QImage& difference) {
    if (one.size() != other.size())
        return one.width() * one.height();
    const auto near = [steps](int a, int b) { return std::abs(a - b) <= steps; };
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
/// Qt does not draw text the same in every version: the pictures are those of Qt 6.4, and another version may
/// have its own in a folder of its number. Where it has none, each eighth of the pictures' size is compared,
/// for what is missing, or out of place or colour. Where TAMBREL_ACCEPT_EXPECTED is set, a picture that
/// differs becomes this version's.
[[nodiscard]] inline ::testing::AssertionResult isExpected(const QImage& received, const QString& name) {
    const auto version = QVersionNumber::fromString(qVersion());
    const QString number = QString("%1.%2").arg(version.majorVersion()).arg(version.minorVersion());
    const QDir folder(TAMBREL_EXPECTED_TEXTS "/window");
    const QString own = (number == "6.4" ? "" : number + "/") + name + ".png";
    const QString kept = folder.exists(own) ? own : name + ".png";

    const bool isOfThisVersion = number == "6.4" || folder.exists(own);
    const auto compared = [&](const QImage& image) {
        const QImage whole = image.convertToFormat(QImage::Format_RGB32);
        return isOfThisVersion
                   ? whole
                   : whole.scaled(whole.size() / 8, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    const QImage picture = compared(received), expected = compared(QImage(folder.filePath(kept)));
    const int steps = isOfThisVersion ? 1 : 32; // By one, processors may round differently.
    QImage difference =
        picture.convertToFormat(QImage::Format_Grayscale8).convertToFormat(QImage::Format_RGB32);
    const int count = differingPixels(picture, expected, steps, difference);
    if (count == 0)
        return ::testing::AssertionSuccess();
    if (std::getenv("TAMBREL_ACCEPT_EXPECTED") != nullptr) {
        folder.mkpath(QFileInfo(own).path());
        EXPECT_TRUE(received.convertToFormat(QImage::Format_RGB32).save(folder.filePath(own), "png", 0))
            << own.toStdString();
        return ::testing::AssertionSuccess();
    }
    const QDir build(TAMBREL_DIFFERENCES);
    build.mkpath(".");
    const QString seen = build.filePath(name + ".png");
    const QString red = build.filePath(name + "-difference.png");
    EXPECT_TRUE(received.save(seen) && difference.save(red)) << seen.toStdString();
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
