#include "tests/support/verbose_capture.h"

#include <platform/runtime/allocator.h>
#include <platform/runtime/exception.h>
#include <platform/runtime/memory_scope.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace
{
/// A host's exception that puts what it was doing around the message that is there.
class ContextException : public S_FileException
{
public:
    ContextException(const char* fileName, const std::string& context) : S_FileException(fileName, "does not exist")
    {
        addHint("of the old message");
        setError("%s: %s (%s)", context.c_str(), getErrorMessage(), context.c_str());
    }
};

class SilentException : public S_MemoryException
{
};
}  // namespace

TEST(Exceptions, AFrameworkHandlerGetsTheMessageCutToItsBuffer)
{
    const S_FileException thrown("walk.tw", "does not exist");
    char text[12];
    unsigned int helpContext = 7;
    const CException& root = thrown;
    EXPECT_EQ(root.GetErrorMessage(text, sizeof text, &helpContext), 1);
    EXPECT_STREQ(text, "File \"walk.");
    EXPECT_EQ(helpContext, 0u);
    EXPECT_STREQ(root.GetRuntimeClass()->m_lpszClassName, "S_FileException");
    EXPECT_EQ(SilentException().GetErrorMessage(text, sizeof text, nullptr), 0);
    EXPECT_STREQ(text, "");
    support::VerboseCapture log;
    EXPECT_STREQ(S_MemoryException_Allocation().what(), "Out of system memory resources");
    {
        const support::VerboseCapture inner;
        EXPECT_EQ(root.ReportError(), 1);
        EXPECT_EQ(inner.getText(), "File \"walk.tw\": does not exist\n");
    }
    root.ReportError();
    EXPECT_EQ(log.getText(), "File \"walk.tw\": does not exist\n") << "of the outer log again";
    EXPECT_STREQ(static_cast<const std::exception&>(thrown).what(), "File \"walk.tw\": does not exist");
}

TEST(Exceptions, AMessageSurvivesTheCopyThatIsThrown)
{
    try
    {
        const S_ScriptException original("a%s.txt", 3, "soldier", "index", "100% wrong");
        throw S_ScriptException(original);
    }
    catch (const S_Exception& caught)
    {
        EXPECT_STREQ(caught.getErrorMessage(),
                     "Script \"a%s.txt\", line 3, block \"soldier\", key \"index\": 100% wrong");
        std::string report = "Loading: ";
        caught.Dump(report);
        EXPECT_EQ(report, std::string("Loading: ") + caught.getErrorMessage());
    }
}

TEST(Exceptions, AMessageMayBecomePartOfTheNext)
{
    // Longer than what is there, so that the message needs other storage.
    const std::string context(200, 'c');
    EXPECT_EQ(ContextException("walk.tw", context).getErrorMessage(),
              context + ": File \"walk.tw\": does not exist (" + context + ")");
    EXPECT_STREQ(ContextException("walk.tw", "").what(), ": File \"walk.tw\": does not exist ()");
}

TEST(Memory, AScopeBooksWhatIsAllocatedInsideItAndNotInAnInnerOne)
{
    const auto before = S_MemoryScope::getUsage("outer scope of the test");
    {
        const S_MemoryScope outer("outer scope of the test");
        const S_Vector<char> booked(100);
        {
            const S_MemoryScope inner("inner scope of the test");
            const S_Vector<char> elsewhere(1000);
            EXPECT_STREQ(S_MemoryScope::getCurrentName(), "inner scope of the test");
        }
        EXPECT_STREQ(S_MemoryScope::getCurrentName(), "outer scope of the test");
    }
    const auto after = S_MemoryScope::getUsage("outer scope of the test");
    EXPECT_EQ(after.m_iBlocks - before.m_iBlocks, 1);
    EXPECT_EQ(after.m_iBytes - before.m_iBytes, 100);
    EXPECT_EQ(S_MemoryScope::getUsage("inner scope of the test").m_iBytes, 1000);
    for (int i = 0; i < 100; ++i)
    {
        EXPECT_EQ(S_MemoryScope::getUsage(("never opened " + std::to_string(i)).c_str()).m_iBlocks, 0);
    }
    const S_MemoryScope late("opened after many questions");
    EXPECT_STREQ(S_MemoryScope::getCurrentName(), "opened after many questions") << "asking opens no account";
}

// The name may stand in a library that is unloaded while this layer stays.
TEST(Memory, AScopeKeepsItsNameWhenTheCallersIsGone)
{
    char name[] = "scope of an unloaded library";
    {
        const S_MemoryScope scope(name);
        std::memset(name, 'x', sizeof name - 1);
        EXPECT_STREQ(S_MemoryScope::getCurrentName(), "scope of an unloaded library");
        const S_Vector<char> booked(100);
    }
    EXPECT_EQ(S_MemoryScope::getUsage("scope of an unloaded library").m_iBytes, 100);
    EXPECT_EQ(S_MemoryScope::getUsage(name).m_iBlocks, 0);

    const std::string longName(100, 'l');
    {
        const S_MemoryScope scope(longName.c_str());
        const S_Vector<char> booked(10);
    }
    EXPECT_EQ(S_MemoryScope::getUsage(longName.c_str()).m_iBytes, 10);
}

TEST(MemoryDeathTest, ScopesPastTheSixtyFourthNameAreBookedTogether)
{
    const auto openMany = []
    {
        for (int i = 0; i < 70; ++i)
        {
            const S_MemoryScope scope(("scope " + std::to_string(i)).c_str());
            const S_Vector<char> booked(1);
        }
        const S_MemoryScope last("scope 69");
        std::exit(std::strcmp(S_MemoryScope::getCurrentName(), "other") == 0 &&
                          S_MemoryScope::getUsage("other").m_iBlocks >= 6
                      ? 0
                      : 1);
    };
    EXPECT_EXIT(openMany(), testing::ExitedWithCode(0), "");
}

TEST(Exceptions, HintsAreForPeopleAndLeaveTheMessageAsItIs)
{
    try
    {
        S_FileException thrown("walk.tw", "does not exist");
        thrown.addHint("looked for in %s", "data%s");
        try
        {
            throw thrown;
        }
        catch (S_Exception& passing)
        {
            passing.addHint("for \"%s\"", "soldier");
            throw;
        }
    }
    catch (const S_Exception& caught)
    {
        EXPECT_STREQ(caught.getErrorMessage(), "File \"walk.tw\": does not exist");
        EXPECT_STREQ(caught.what(), "File \"walk.tw\": does not exist (looked for in data%s; for \"soldier\")");
    }
}
