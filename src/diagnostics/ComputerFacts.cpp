#include "ComputerFacts.h"

#include <QString>
#include <QSysInfo>

#include <array>
#include <cmath>
#include <string_view>
#include <unistd.h>

namespace tambrel {

ComputerFacts ComputerFacts::current() {
    return {.systemVersion = QSysInfo::prettyProductName().toStdString(),
            .computerName = QSysInfo::machineHostName().toStdString(),
            .processorCount = sysconf(_SC_NPROCESSORS_ONLN),
            .physicalMemory = std::int64_t{sysconf(_SC_PHYS_PAGES)} * sysconf(_SC_PAGESIZE)};
}

// The headings are the same on every system, so that reports can be compared.
std::string ComputerFacts::report() const {
    return "macOS: " + systemVersion +
           "\nComputer Name: " + (computerName.empty() ? "Unknown" : computerName) +
           "\nProcessor Count: " + std::to_string(processorCount) +
           "\nPhysical Memory: " + memoryText(physicalMemory);
}

std::string memoryText(std::int64_t bytes) {
    struct Unit {
        std::string_view name;
        double factor; // To round to the unit's fractional digits.
    };
    static constexpr std::array<Unit, 5> units{
        {{"bytes", 1}, {"KB", 1}, {"MB", 10}, {"GB", 100}, {"TB", 100}}};
    auto amount = static_cast<double>(bytes);
    const auto* unit = units.begin();
    const auto rounded = [&] { return std::round(amount * unit->factor) / unit->factor; };
    while (rounded() >= 1024 && unit + 1 != units.end()) {
        amount /= 1024;
        ++unit;
    }
    return QString::number(rounded(), 'g', 6).toStdString().append(" ").append(unit->name);
}

} // namespace tambrel
