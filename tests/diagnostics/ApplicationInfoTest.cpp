#include "ApplicationInfo.h"

#include <gtest/gtest.h>

namespace tambrel {
namespace {

using Text = std::string;

TEST(ApplicationInfo, EnablesDiagnosticsByIdentifierOrSwitch) {
    struct Row {
        const char* name;
        std::optional<std::string> identifier;
        ApplicationInfo::DiagnosticsSwitch diagnosticsSwitch;
        bool enabled;
    };
    const Row rows[] = {
        {"nothing at all", {}, {}, false},
        {"beta identifier, no switch", "software.kestrune.tambrel.beta", {}, true},
        {"beta identifier overrules a false switch", "software.kestrune.tambrel.beta", false, true},
        {"beta inside the identifier", "software.beta.tambrel", {}, false},
        {"beta without its point", "software.tambrelbeta", {}, false},
        {"beta in capitals", "software.kestrune.tambrel.BETA", {}, false},
        {"Boolean true", "software.kestrune.tambrel", true, true},
        {"Boolean false", {}, false, false},
        {"text YES", {}, Text("YES"), true},
        {"text True", {}, Text("True"), true},
        {"text 1", {}, Text("1"), true},
        {"text no", {}, Text("no"), false},
        {"text 0", {}, Text("0"), false},
        {"text on", {}, Text("on"), false},
        {"empty text", {}, Text(), false},
        {"start of a text that enables", {}, Text("tru"), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const ApplicationInfo info{.identifier = row.identifier, .diagnosticsSwitch = row.diagnosticsSwitch};
        EXPECT_EQ(info.diagnosticsEnabled(), row.enabled);
    }
}

TEST(ApplicationInfo, OfThisBuildHasNoEmptyTexts) {
    const auto& info = ApplicationInfo::current();
    for (const auto& text : {info.displayName, info.name, info.shortVersion, info.build, info.identifier})
        EXPECT_NE(text, std::optional<std::string>(""));
}

} // namespace
} // namespace tambrel
