// One-value queries against the package's TESSEL_InstallProperties table.
#include "frame/action_frame.h"
#include "frame/msi_table.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::wstring>;

TEST(GetFromMSITable, GivesTheMatchingValueExactlyElseFalseWithOnlyTheReadingLine) {
    TestSession session(InstallProperties{{L"TESSEL_PID", L"PID-0042 x"}, {L"OTHER", L"no"}});
    const std::wstring reading = L"Calder_CA GetFromMSITable(), Reading Property table\n ";
    std::wstring value = L"before";
    EXPECT_FALSE(GetFromMSITable(InstallPropertiesQuery, L"MISSING", value));
    EXPECT_FALSE(GetFromMSITable(L"SELECT `Value` FROM `NoSuchTable` WHERE `Property` = '%s'",
                                 L"OTHER", value));
    EXPECT_EQ(L"before", value);
    ASSERT_TRUE(GetFromMSITable(InstallPropertiesQuery, L"TESSEL_PID", value));
    EXPECT_EQ(L"PID-0042 x", value);
    EXPECT_EQ((Lines{reading, reading, reading,
                     L"Calder_CA GetFromMSITable() PackageRead Property Value is PID-0042 x \n"}),
              session.LogLines());

    SessionHandle = 0; // no session, so no active database either
    value = L"before";
    EXPECT_FALSE(GetFromMSITable(InstallPropertiesQuery, L"TESSEL_PID", value));
    EXPECT_EQ(L"before", value);
}
