// The installer log and the user message as the engine receives them.
#include "frame/action_frame.h"
#include "harness/test_session.h"

#include <gtest/gtest.h>

using Lines = std::vector<std::wstring>;

TEST(LogMessage, FormatsOneInfoLineOverflowsToAFixedTextAndNeedsASession) {
    TestSession session;
    const std::wstring fits(500, L'x');
    const std::wstring tooLong(LogLineChars, L'x');
    LogMessage(session.Handle(), L"Calder_CA %s has %d items, %u left \n", L"Folder", -3, 7u);
    LogMessage(session.Handle(), L"[%s]", fits.c_str());
    LogMessage(session.Handle(), L"[%s]", tooLong.c_str());
    LogMessage(0, L"lost %s", L"line");
    EXPECT_EQ((Lines{L"Calder_CA Folder has -3 items, 7 left \n", L"[" + fits + L"]",
                     L"CA buffer overflow\n"}),
              session.LogLines());
}

TEST(ShowUserMessage, SendsTheTextWithItsFlagsAndGivesTheAnswer) {
    TestSession session;
    EXPECT_EQ(IDOK, ShowUserMessage(session.Handle(), L"Line one\nLine two", MB_ICONWARNING));
    const std::vector<CapturedMessage> shown = session.UserMessages();
    ASSERT_EQ(1u, shown.size());
    EXPECT_EQ(L"Line one\nLine two", shown[0].text);
    EXPECT_EQ(static_cast<UINT>(MB_ICONWARNING), shown[0].flags);
    EXPECT_TRUE(session.LogLines().empty());
}
