// The shared string helpers at their edges: folding, digits, replacement, separators, formats.
#include "frame/strings.h"

#include <gtest/gtest.h>

TEST(StringTests, FoldedOrderDigitsAndTheSeparatorAPathNeeds) {
    EXPECT_TRUE(EqualFolded(L"ABC", L"abc"));
    EXPECT_FALSE(EqualFolded(L"ABC", L"abd"));
    EXPECT_EQ(-1, CompareFolded(L"Apple", L"banana"));
    EXPECT_EQ(1, CompareFolded(L"b", L"A"));
    EXPECT_TRUE(IsAllDigits(L""));
    EXPECT_TRUE(IsAllDigits(L"0123456789"));
    EXPECT_FALSE(IsAllDigits(L" 1"));
    EXPECT_EQ(L"", PathSeparatorFor(L"C:\\Folder\\"));
    EXPECT_EQ(L"", PathSeparatorFor(L"C:/Folder/"));
    EXPECT_EQ(L"\\", PathSeparatorFor(L"C:\\Folder"));
    EXPECT_EQ(L"\\", PathSeparatorFor(L""));
}

TEST(ReplaceAll, ReplacesLeftToRightWithoutRescanning) {
    std::wstring path = L"C:/a/b/";
    ReplaceAll(path, L"/", L"\\");
    EXPECT_EQ(L"C:\\a\\b\\", path);
    std::wstring grows = L"aXa";
    ReplaceAll(grows, L"a", L"aa");
    EXPECT_EQ(L"aaXaa", grows);
    std::wstring same = L"keep";
    ReplaceAll(same, L"", L"x");
    ReplaceAll(same, nullptr, L"x");
    EXPECT_EQ(L"keep", same);
}

TEST(FormatWideString, CountsCharactersAndRefusesWhatDoesNotFit) {
    wchar_t buffer[8];
    EXPECT_EQ(7, FormatWideString(buffer, 8, L"%s=%d", L"key", 123));
    EXPECT_STREQ(L"key=123", buffer);
    EXPECT_EQ(-1, FormatWideString(buffer, 8, L"%s", L"12345678"));
    EXPECT_EQ(L'\0', buffer[7]);

    wchar_t fixed[FixedFormatChars];
    const std::wstring long300(300, L'x');
    EXPECT_EQ(-1, FormatWideStringFixed(fixed, 400, L"%s", long300.c_str()));
    EXPECT_EQ(199, FormatWideStringFixed(fixed, 400, L"%s", long300.substr(0, 199).c_str()));
    EXPECT_EQ(-1, FormatWideStringFixed(fixed, 10, L"error = %d\n", 123456));
}
