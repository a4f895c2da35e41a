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

constexpr double infinity = std::numeric_limits<double>::infinity();
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
        {"inside", windowAt(100, 100), pair, windowAt(100, 100)},
        {"touching all it can", windowAt(520, 320), pair, windowAt(520, 320)},
        {"beyond the left and top", windowAt(-30, 0), pair, windowAt(0, 25)},
        {"beyond the bottom", windowAt(1300, 700), pair, windowAt(1300, 420)},
        {"more on the right screen", windowAt(900, 100), pair, windowAt(1000, 100)},
        {"more on the left screen", windowAt(600, 100), pair, windowAt(520, 100)},
        {"equal parts, the earlier wins", windowAt(760, 100), pair, windowAt(520, 100)},
        {"equal parts, the other way round", windowAt(760, 100), {right, left}, windowAt(1000, 100)},
        {"contained in two, the first wins",
         windowAt(100, 100),
         {left, {0, 0, 700, 900}},
         windowAt(100, 100)},
        {"its screen is gone", windowAt(1300, 100), {left}, windowAt(1300, 100)},
        {"its screen is gone, a corner is not", windowAt(999, 100), {left}, windowAt(520, 100)},
        {"only an edge in common", windowAt(1000, 100), {left}, windowAt(1000, 100)},
        {"no screen", windowAt(-30, 0), {}, windowAt(-30, 0)},
        {"too wide", windowAt(50, 30), {{0, 0, 400, 600}}, windowAt(-40, 30)},
        {"too high", windowAt(50, 30), {{0, 100, 600, 300}}, windowAt(50, 10)},
        {"as large as the screen", windowAt(7, -7), {{0, 0, 480, 480}}, windowAt(0, 0)},
        {"a screen without an extent", windowAt(-30, 100), {{0, 0, 0, 900}, left}, windowAt(0, 100)},
        {"a screen that is no number", windowAt(-30, 100), {{NAN, 0, 900, 900}, left}, windowAt(0, 100)},
        {"an empty frame", {-30, 0, 0, 480}, pair, {-30, 0, 0, 480}},
        {"a frame inside out", {-30, 0, 480, -9}, pair, {-30, 0, 480, -9}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Store::clamped(row.frame, row.screens), row.clamped);
    }
}

TEST(WindowPlacement, CentersAWindowThatHasNoPlaceYet) {
    const struct {
        const char* name;
        std::vector<QRectF> screens;
        QRectF frame;
    } rows[] = {
        {"the first screen", pair, windowAt(260, 172.5)},
        {"the first that is usable", {{0, 0, -5, 900}, right}, windowAt(1360, 210)},
        {"a screen that is too small", {{0, 0, 400, 300}}, windowAt(-40, -90)},
        {"no screen", {}, windowAt(0, 0)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Store::centeredFrame(window, row.screens), row.frame);
    }
}

class SavedWindowPlacement : public ::testing::Test {
protected:
    QTemporaryDir folder;
    QSettings defaults{folder.filePath("settings.ini"), QSettings::IniFormat};
    const Store store{defaults};
    const QRectF centered = windowAt(260, 172.5);
};

TEST_F(SavedWindowPlacement, OpensWhereTheWindowWasWithTheSizeOfToday) {
    store.save({1100.25, -3, 500, 700});
    EXPECT_EQ(store.savedFrame(window), windowAt(1100.25, -3));
    EXPECT_EQ(store.launchFrame(window, pair), windowAt(1100.25, 0));
}

TEST_F(SavedWindowPlacement, WritesNoFrameThatCouldNotBeUsed) {
    store.save(windowAt(100, 100));
    const double bad[] = {infinity, -infinity, NAN};
    for (const double number : bad)
        for (const QRectF& frame : {QRectF(number, 0, 9, 9), QRectF(0, number, 9, 9), QRectF(0, 0, number, 9),
                                    QRectF(0, 0, 9, number)})
            store.save(frame);
    for (const QSizeF size : {QSizeF(0, 9), QSizeF(9, 0), QSizeF(-9, 9), QSizeF(9, -9)})
        store.save({{0, 0}, size});
    EXPECT_EQ(store.savedFrame(window), windowAt(100, 100));
}

TEST_F(SavedWindowPlacement, IgnoresGarbage) {
    const struct {
        const char* name;
        QVariant value;
    } rows[] = {
        {"nothing", {}},
        {"an empty text", ""},
        {"words", "on the left, please"},
        {"three numbers", "{{1, 2}, {3}}"},
        {"five numbers", "{{1, 2}, {3, 4, 5}}"},
        {"an open end", "{{1, 2}, {3, 4}"},
        {"more after the end", "{{1, 2}, {3, 4}} and so on"},
        {"no width", "{{1, 2}, {0, 4}}"},
        {"a negative height", "{{1, 2}, {3, -4}}"},
        {"an infinite place", "{{inf, 2}, {3, 4}}"},
        {"a place that is no number", "{{1, nan}, {3, 4}}"},
        {"a number too large", "{{1e999, 2}, {3, 4}}"},
        {"a list", QStringList{"{{1", "2}", "{3", "4}}"}},
        {"a number", 7},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        defaults.setValue(Store::frameKey, row.value);
        EXPECT_EQ(store.launchFrame(window, pair), centered);
    }
}

TEST(RectangleText, ReadsBackToTheSameNumbersInEveryLocale) {
    EXPECT_EQ(rectangleText({1, -2.5, 480, 1e300}), "{{1, -2.5}, {480, 1e+300}}");
    const char* const before = std::setlocale(LC_ALL, nullptr);
    const std::string restored = before ? before : "C";
    for (const char* locale : {"C", "de_DE.UTF-8"}) { // With a decimal comma, where it is installed.
        std::setlocale(LC_ALL, locale);
        for (const QRectF& frame :
             {QRectF(0.1, 1.0 / 3, 5e-324, 1.7976931348623157e308), QRectF(-0.5, -1e17, 123456789.125, 480)})
            EXPECT_EQ(rectangleFromText(rectangleText(frame)), frame) << locale;
    }
    std::setlocale(LC_ALL, restored.c_str());
    EXPECT_EQ(rectangleFromText(" { {1,2} , {3 , 4} } "), QRectF(1, 2, 3, 4));
}

} // namespace
} // namespace tambrel
