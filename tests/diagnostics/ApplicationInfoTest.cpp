#include "ApplicationInfo.h"

#include <gtest/gtest.h>

namespace tambrel {
namespace {

TEST(ApplicationInfo, EnablesDiagnosticsByIdentifierOrSwitch) {
    const struct {
        const char* name;
        std::optional<std::string> identifier;
        ApplicationInfo::DiagnosticsSwitch diagnosticsSwitch;
        bool enabled;
    } rows[] = {
        {"beta identifier overrules a false switch", "software.kestrune.tambrel.beta", false, true},
        {"beta inside the identifier", "software.beta.tambrel", {}, false},
        {"beta without its point", "software.kestrune.tambrelbeta", {}, false},
        {"Boolean true", "software.kestrune.tambrel", true, true},
        {"text YES", {}, std::string("YES"), true},
        {"text True", {}, std::string("True"), true},
        {"text 1", {}, std::string("1"), true},
        {"text on", {}, std::string("on"), false},
        {"start of a text that enables", {}, std::string("tru"), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const ApplicationInfo info{.identifier = row.identifier, .diagnosticsSwitch = row.diagnosticsSwitch};
        EXPECT_EQ(info.diagnosticsEnabled(), row.enabled);
    }
}

} // namespace
} // namespace tambrel
