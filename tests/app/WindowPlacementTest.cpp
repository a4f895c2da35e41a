#include "RectangleText.h"
#include "TambrelWindowPlacementStore.h"

#include <gmock/gmock.h>

#include <QSettings>
#include <QTemporaryDir>

#include <cmath>
#include <limits>
#include <random>

namespace tambrel {
namespace {

using Store = TambrelWindowPlacementStore;

constexpr double infinity = std::numeric_limits<double>::infinity();
const QSizeF window{480, 480};
const std::vector<QRectF> pair{{0, 25, 1000, 775}, {1000, 0, 1200, 900}};

QRectF windowAt(double x, double y) {
    return {{x, y}, window};
}

/// A frame as four numbers, and where the rules put it, step by step.
struct Frame {
    double x, y, width, height;

    [[nodiscard]] bool isUsable() const {
        return std::isfinite(x + y + width + height) && width > 0 && height > 0;
    }
    [[nodiscard]] bool isWithin(const Frame& screen) const {
        return x >= screen.x && y >= screen.y && x + width <= screen.x + screen.width &&
               y + height <= screen.y + screen.height;
    }
    [[nodiscard]] double areaWithin(const Frame& screen) const {
        const double wide = std::min(x + width, screen.x + screen.width) - std::max(x, screen.x);
        const double high = std::min(y + height, screen.y + screen.height) - std::max(y, screen.y);
        return wide > 0 && high > 0 ? wide * high : 0;
    }
    [[nodiscard]] QRectF rectangle() const { return {x, y, width, height}; }
};

double movedInto(double start, double length, double screenStart, double screenLength) {
    if (length > screenLength)
        return screenStart + (screenLength - length) / 2;
    if (start < screenStart)
        return screenStart;
    return start + length > screenStart + screenLength ? screenStart + screenLength - length : start;
}

Frame moved(Frame frame, std::vector<Frame> screens) {
    std::erase_if(screens, [](const Frame& screen) { return !screen.isUsable(); });
    const Frame* best = nullptr;
    for (const Frame& screen : screens)
        if (frame.areaWithin(screen) > (best ? frame.areaWithin(*best) : 0))
            best = &screen;
    for (auto screen = screens.rbegin(); screen != screens.rend(); ++screen)
        if (frame.isWithin(*screen))
            best = &*screen;
    if (best && frame.isUsable()) {
        frame.x = movedInto(frame.x, frame.width, best->x, best->width);
        frame.y = movedInto(frame.y, frame.height, best->y, best->height);
    }
    return frame;
}

Frame centered(const std::vector<Frame>& screens) {
    for (const auto& [x, y, width, height] : screens)
        if (Frame{x, y, width, height}.isUsable())
            return {x + width / 2 - 240, y + height / 2 - 240, 480, 480};
    return {0, 0, 480, 480};
}

TEST(WindowPlacement, PutsWindowsOnScreensAsTheRulesSay) {
    std::minstd_rand hand{33};
    const auto oneOf = [&](std::initializer_list<double> numbers) {
        return numbers.begin()[(hand() >> 8) % numbers.size()];
    };
    const auto anyFrame = [&](double strange) {
        const auto place = [&] {
            return oneOf({0, 0, -240, 25, 240.5, 500, 760, 1000, hand() % 64 == 0 ? strange : 1});
        };
        const auto length = [&] {
            return oneOf({480, 480, 300, 1000, 1200, hand() % 4 == 0 ? strange : 240});
        };
        return Frame{place(), place(), length(), length()};
    };
    int changes = 0;
    for (int i = 0; i < 20'000 && !::testing::Test::HasFailure(); ++i) {
        std::vector<Frame> screens;
        std::vector<QRectF> visible;
        for (auto count = hand() / 256 % 4; count > 0; --count)
            visible.push_back(screens.emplace_back(anyFrame(oneOf({0, -9, NAN, infinity}))).rectangle());
        const Frame frame = anyFrame(oneOf({0, -9, infinity}));
        const QRectF seen = Store::clamped(frame.rectangle(), visible);
        EXPECT_EQ(rectangleText(seen), rectangleText(moved(frame, screens).rectangle())) << i;
        EXPECT_EQ(rectangleText(Store::centeredFrame(window, visible)),
                  rectangleText(centered(screens).rectangle()))
            << i;
        changes += seen != frame.rectangle() ? 1 : 0;
    }
    EXPECT_GT(changes, 1000);
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
    const QVariant rows[] = {{},
                             "{{1, 2}, {3, 4, 5}}",
                             "{{1, 2}, {3, 4}} and so on",
                             "{{1, 2}, {0, 4}}",
                             "{{1, 2}, {3, -4}}",
                             "{{inf, 2}, {3, 4}}",
                             "{{1e999, 2}, {3, 4}}",
                             QStringList{"{{1", "2}", "{3", "4}}"},
                             7};
    for (const QVariant& value : rows) {
        defaults.setValue(Store::frameKey, value);
        EXPECT_EQ(store.launchFrame(window, pair), centered) << value.toString().toStdString();
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
