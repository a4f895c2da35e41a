#include "RectangleText.h"
#include "TambrelWindowPlacementStore.h"

#include <gmock/gmock.h>

#include <QSettings>
#include <QTemporaryDir>

#include <cmath>
#include <limits>

namespace tambrel {
namespace {

using Store = TambrelWindowPlacementStore;

const QSizeF window{480, 480};
const QRectF left{0, 25, 1000, 775};
const QRectF right{1000, 0, 1200, 900};
const std::vector<QRectF> pair{left, right};

QRectF windowAt(double x, double y) {
    return {{x, y}, window};
}

TEST(WindowPlacement, MovesAFrameIntoTheScreenItBelongsTo) {
    const struct {
        const char* name;
        QRectF frame;
        std::vector<QRectF> screens;
        QRectF clamped;
    } rows[] = {
        {"beyond the left and top", windowAt(-30, 0), pair, windowAt(0, 25)},
        {"beyond the bottom", windowAt(1300, 700), pair, windowAt(1300, 420)},
        {"more on the right screen", windowAt(900, 100), pair, windowAt(1000, 100)},
        {"equal parts, the earlier wins", windowAt(760, 100), pair, windowAt(520, 100)},
        {"equal parts, the other way round", windowAt(760, 100), {right, left}, windowAt(1000, 100)},
        {"its screen is gone, a corner is not", windowAt(999, 100), {left}, windowAt(520, 100)},
        {"too wide", windowAt(50, 30), {{0, 0, 400, 600}}, windowAt(-40, 30)},
        {"as large as the screen", windowAt(7, -7), {{0, 0, 480, 480}}, windowAt(0, 0)},
        {"a screen without an extent", windowAt(-30, 100), {{0, 0, 0, 900}, left}, windowAt(0, 100)},
        {"an empty frame", {-30, 0, 0, 480}, pair, {-30, 0, 0, 480}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Store::clamped(row.frame, row.screens), row.clamped);
    }
}

class SavedWindowPlacement : public ::testing::Test {
protected:
    QTemporaryDir folder;
    QSettings defaults{folder.filePath("settings.ini"), QSettings::IniFormat};
    const Store store{defaults};
};

TEST_F(SavedWindowPlacement, OpensWhereTheWindowWasWithTheSizeOfToday) {
    store.save({1100.25, -3, 500, 700});
    EXPECT_EQ(store.savedFrame(window), windowAt(1100.25, -3));
    EXPECT_EQ(store.launchFrame(window, pair), windowAt(1100.25, 0));
}

TEST_F(SavedWindowPlacement, WritesNoFrameThatCouldNotBeUsed) {
    store.save(windowAt(100, 100));
    for (const double bad : {std::numeric_limits<double>::infinity(), static_cast<double>(NAN)})
        for (const QRectF& frame :
             {QRectF(bad, 0, 9, 9), QRectF(0, bad, 9, 9), QRectF(0, 0, bad, 9), QRectF(0, 0, 9, bad)})
            store.save(frame);
    for (const QSizeF size : {QSizeF(0, 9), QSizeF(9, -9)})
        store.save({{0, 0}, size});
    EXPECT_EQ(store.savedFrame(window), windowAt(100, 100));
}

TEST_F(SavedWindowPlacement, IgnoresGarbage) {
    for (const QVariant& value :
         {QVariant(), QVariant("on the left, please"), QVariant("{{1, 2}, {3, 4, 5}}"),
          QVariant("{{1, 2}, {3, 4}} and so on"), QVariant("{{1, 2}, {0, 4}}"), QVariant("{{1, 2}, {3, -4}}"),
          QVariant("{{1, nan}, {3, 4}}"), QVariant("{{1e999, 2}, {3, 4}}"), QVariant(7)}) {
        SCOPED_TRACE(value.toString().toStdString());
        defaults.setValue(Store::frameKey, value);
        EXPECT_EQ(store.launchFrame(window, pair), windowAt(260, 172.5));
        EXPECT_EQ(store.launchFrame(window, {}), windowAt(0, 0));
    }
}

TEST(RectangleText, ReadsBackToTheSameNumbersInEveryLocale) {
    EXPECT_EQ(rectangleText({1, -2.5, 480, 1e300}), "{{1, -2.5}, {480, 1e+300}}");
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"C", "de_DE.UTF-8"}) { // With a decimal comma, where it is installed.
        std::setlocale(LC_ALL, locale);
        const QRectF frame(0.1, 1.0 / 3, 5e-324, 1.7976931348623157e308);
        EXPECT_EQ(rectangleFromText(rectangleText(frame)), frame) << locale;
    }
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_EQ(rectangleFromText(" { {1,2} , {3 , 4} } "), QRectF(1, 2, 3, 4));
}

} // namespace
} // namespace tambrel
