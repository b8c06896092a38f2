#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "Support.h"
#include "SystemCalls.h"
#include "zet/ZETLogProvider.h"

namespace {

/// What reached the system log, by the functions below, which stand before those of the C library.
std::vector<std::string> systemLog;

void KeepRecord(int priority, const char* format, std::va_list arguments) {
    char text[4096];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::vsnprintf(text, sizeof text, format, arguments);
#pragma GCC diagnostic pop
    systemLog.push_back(std::to_string(priority) + " " + format + " " + text);
}

}  // namespace

extern "C" {

void openlog(const char* identity, int /*options*/, int /*facility*/) {
    systemLog.push_back(std::string("open ") + identity);
}

void closelog() {
    systemLog.push_back("close");
}

void syslog(int priority, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    KeepRecord(priority, format, arguments);
    va_end(arguments);
}

void __syslog_chk(int priority, int /*flag*/, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    KeepRecord(priority, format, arguments);
    va_end(arguments);
}
}

namespace ZET::Test {
namespace {

class LogProvider : public testing::Test {
  protected:
    ~LogProvider() override {
        SetLogObserver({});
        SetLogFilter({});
        SetLogWording({});
        ConfigureLog(ZETLogTarget::StandardError, ZETLogWarning, "zet");
    }

    CZETLogProvider& m_log = CZETLogProvider::GetLogProvider();
};

TEST_F(LogProvider, ThereIsOneForTheProcess) {
    EXPECT_EQ(&CZETLogProvider::GetLogProvider(), &m_log);
}

TEST_F(LogProvider, ShowsIdentityAndLevelOfEachRecord) {
    ConfigureLog(ZETLogTarget::StandardError, ZETLogNotice, "zet-init");
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogError, 1, "broken"); }), "zet-init: error: broken\n");
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogWarning, 1, "odd"); }), "zet-init: warning: odd\n");
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogNotice, 1, "fine"); }), "zet-init: notice: fine\n");
}

TEST(LogProviderBeforeConfiguration, ShowsErrorsAndWarningsOnStandardError) {
    // A process of its own, in which no other test has configured anything.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            CZETLogProvider& log = CZETLogProvider::GetLogProvider();
            log.Put(ZETLogError, 1, "e");
            log.Put(ZETLogWarning, 1, "w");
            log.Put(ZETLogNotice, 1, "n");
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "^zet: error: e\nzet: warning: w\n$");
    GTEST_FLAG_SET(death_test_style, "fast");
}

TEST(LogProviderBeforeConfiguration, TellsAThreadThatObservesAloneWhatItLogs) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            CZETLogProvider& log = CZETLogProvider::GetLogProvider();
            std::vector<std::string> seen;
            const ZETLogObserver observer = [&](ZETLogLevel level, const std::string& text) {
                seen.push_back(std::to_string(level) + " " + text);
                log.Put(ZETLogWarning, 1, "of the observer");
            };
            EXPECT_EQ(SetThreadLogObserver(&observer), nullptr);
            log.Put(ZETLogError, 1, "bro\nken");
            log.Put(ZETLogNotice, 1, "not shown");
            std::thread([&] { log.Put(ZETLogError, 1, "of another thread"); }).join();
            EXPECT_EQ(SetThreadLogObserver(nullptr), &observer);
            log.Put(ZETLogError, 1, "afterwards");
            EXPECT_THAT(seen, testing::ElementsAre("0 bro\\nken"));
            std::_Exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0),
        "^zet: warning: of the observer\nzet: error: of another thread\nzet: error: afterwards\n$");
    GTEST_FLAG_SET(death_test_style, "fast");
}

TEST_F(LogProvider, ThreadThatObservesSeesWhatGoesWhereTheLogIsConfigured) {
    ConfigureLog(ZETLogTarget::StandardError, ZETLogNotice, "x");
    std::vector<std::string> seen;
    const ZETLogObserver observer = [&](ZETLogLevel, const std::string& text) { seen.push_back(text); };
    SetThreadLogObserver(&observer);
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogNotice, 1, "fine"); }), "x: notice: fine\n");
    SetThreadLogObserver(nullptr);
    EXPECT_THAT(seen, testing::ElementsAre("fine"));
}

TEST_F(LogProvider, RecordsBeyondTheThresholdAreNotShown) {
    ConfigureLog(ZETLogTarget::StandardError, ZETLogError, "x");
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogWarning, 1, "w"); }), "");
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogError, 1, "e"); }), "x: error: e\n");
}

TEST_F(LogProvider, ObserverSeesWhatIsShown) {
    std::vector<std::string> seen;
    SetLogObserver([&](ZETLogLevel level, const std::string& text) {
        seen.push_back(std::to_string(level) + " " + text);
    });
    LoggedBy([&] {
        m_log.Put(ZETLogError, 2, "%s", "bro\nken");
        m_log.Put(ZETLogWarning, 1, "odd");
        m_log.Put(ZETLogNotice, 1, "not shown");
        ConfigureLog(ZETLogTarget::SystemLog, ZETLogNotice, "x");
        m_log.Put(ZETLogNotice, 1, "fine");
    });
    SetLogObserver({});
    m_log.Put(ZETLogNotice, 1, "nobody sees this");
    EXPECT_THAT(seen, testing::ElementsAre(testing::StartsWith("0 bro"), "1 odd", "2 fine"));
    EXPECT_THAT(seen.front(), testing::Not(testing::HasSubstr("\n")));
}

TEST_F(LogProvider, WordingIsPutBeforeTheRecordIsMadePrintableObservedAndWritten) {
    std::vector<std::string> seen;
    SetLogObserver([&](ZETLogLevel, const std::string& text) { seen.push_back(text); });
    SetLogWording([](const std::string& text) { return "/etc/x\n" + text.substr(text.find(':')); });
    EXPECT_EQ(LoggedBy([&] {
                  errno = EIO;
                  m_log.Put(ZETLogError, 2, "%s: %m", "././x\n");
              }),
              "zet: error: /etc/x\\n: Input/output error\n");
    SetLogWording({});
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogError, 1, "././x"); }), "zet: error: ././x\n");
    EXPECT_THAT(seen, testing::ElementsAre("/etc/x\\n: Input/output error", "././x"));
}

TEST_F(LogProvider, WordingIsNotAskedForARecordThatIsNotShown) {
    SetLogWording([](const std::string& text) {
        ADD_FAILURE() << text;
        return text;
    });
    m_log.Put(ZETLogNotice, 1, "not shown");
}

TEST_F(LogProvider, FilterIsAskedAboutWhatTheThresholdLetsThrough) {
    std::vector<ZETLogLevel> asked;
    SetLogFilter([&](ZETLogLevel level) {
        asked.push_back(level);
        return level == ZETLogError;
    });
    EXPECT_EQ(LoggedBy([&] {
                  m_log.Put(ZETLogNotice, 1, "not asked about");
                  m_log.Put(ZETLogWarning, 1, "kept to itself");
                  m_log.Put(ZETLogError, 1, "told");
              }),
              "zet: error: told\n");
    EXPECT_THAT(asked, testing::ElementsAre(ZETLogWarning, ZETLogError));
}

TEST_F(LogProvider, FilterGivesWayToTheOneBefore) {
    EXPECT_FALSE(SetLogFilter([](ZETLogLevel) { return false; }));
    const ZETLogFilter former = SetLogFilter({});
    ASSERT_TRUE(former);
    EXPECT_FALSE(former(ZETLogError));
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogError, 1, "told"); }), "zet: error: told\n");
}

TEST_F(LogProvider, FilterMayLogItself) {
    bool isAsked = false;
    SetLogFilter([&](ZETLogLevel) {
        if (!isAsked) {
            isAsked = true;
            m_log.Put(ZETLogWarning, 1, "seen on the way");
        }
        return true;
    });
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogError, 1, "told"); }),
              "zet: warning: seen on the way\nzet: error: told\n");
}

TEST_F(LogProvider, SingleTextIsWrittenAsItStands) {
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogError, 1, "Failed to open file '%s%n%m'."); }),
              "zet: error: Failed to open file '%s%n%m'.\n");
}

TEST_F(LogProvider, MoreThanOneTextIsFormatted) {
    errno = EIO;
    EXPECT_EQ(LoggedBy([&] {
                  errno = EIO;
                  m_log.Put(ZETLogError, 3, "%s in line %d: %m", "token", 4);
              }),
              "zet: error: token in line 4: Input/output error\n");
}

TEST_F(LogProvider, FormatThatCannotBeFilledIsShownItself) {
    const wchar_t invalid[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogError, 2, "[%ls]", invalid); }), "zet: error: [%ls]\n");
}

TEST_F(LogProvider, MissingTextIsAnEmptyRecord) {
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogError, 1, nullptr); }), "zet: error: \n");
}

TEST_F(LogProvider, LineFeedCannotForgeARecord) {
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogError, 1, "a\nzet: error: forged\r\n"); }),
              "zet: error: a\\nzet: error: forged\\r\\n\n");
}

TEST_F(LogProvider, ControlCharactersAreEscapedAndOtherBytesAreNot) {
    EXPECT_EQ(LoggedBy([&] { m_log.Put(ZETLogError, 1, "\x1b[31m\t\x7f \xc2\x9b \xc2\xa0 é \\ \xff"); }),
              "zet: error: \\x1b[31m\\t\\x7f \\xc2\\x9b \xc2\xa0 é \\ \\xff\n");
}

TEST_F(LogProvider, EachRecordIsOneWrite) {
    SystemCalls calls;
    testing::internal::CaptureStderr();
    m_log.Put(ZETLogError, 1, "one record");
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(calls.Count("write"), 1);
}

TEST_F(LogProvider, ShortAndInterruptedWritesAreContinued) {
    std::string text;
    {
        SystemCalls calls;
        calls.Shorten("write", 3);
        calls.Fail("write", EINTR, 2, true);
        text = LoggedBy([&] { m_log.Put(ZETLogError, 1, "a text of some length"); });
    }
    EXPECT_EQ(text, "zet: error: a text of some length\n");
}

TEST_F(LogProvider, ClosedStandardErrorIsSurvived) {
    EXPECT_EXIT(
        {
            ::close(STDERR_FILENO);
            m_log.Put(ZETLogError, 1, "nobody reads this");
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(LogProvider, PutLeavesErrnoAsItIs) {
    const std::string text = LoggedBy([&] {
        errno = EXDEV;
        m_log.Put(ZETLogError, 1, "x");
        EXPECT_EQ(errno, EXDEV);
    });
    EXPECT_EQ(text, "zet: error: x\n");
}

TEST_F(LogProvider, SystemLogGetsThePriorityAndThePlainText) {
    systemLog.clear();
    ConfigureLog(ZETLogTarget::SystemLog, ZETLogNotice, "zet-client");
    EXPECT_EQ(LoggedBy([&] {
                  m_log.Put(ZETLogError, 1, "%s%n");
                  m_log.Put(ZETLogWarning, 1, "two\nlines");
                  m_log.Put(ZETLogNotice, 1, "three");
              }),
              "");
    ConfigureLog(ZETLogTarget::StandardError, ZETLogWarning, "zet");
    EXPECT_THAT(systemLog, testing::ElementsAre("open zet-client", std::to_string(LOG_ERR) + " %s %s%n",
                                                std::to_string(LOG_WARNING) + " %s two\\nlines",
                                                std::to_string(LOG_NOTICE) + " %s three", "close"));
}

TEST_F(LogProvider, ErrorsAreCountedWhetherShownOrNot) {
    const std::size_t before = CountLoggedErrors();
    LoggedBy([&] {
        m_log.Put(ZETLogError, 1, "counted");
        m_log.Put(ZETLogWarning, 1, "not counted");
    });
    EXPECT_EQ(CountLoggedErrors(), before + 1);
}

TEST_F(LogProvider, RecordsOfSeveralThreadsStayWhole) {
    const std::size_t before = CountLoggedErrors();
    const std::string text = LoggedBy([&] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; i++)
            threads.emplace_back([&] {
                for (int k = 0; k < 200; k++)
                    m_log.Put(ZETLogError, 1, "0123456789");
            });
        for (std::thread& thread : threads)
            thread.join();
    });
    std::string expected;
    for (int i = 0; i < 800; i++)
        expected += "zet: error: 0123456789\n";
    EXPECT_EQ(text, expected);
    EXPECT_EQ(CountLoggedErrors(), before + 800);
}

}  // namespace
}  // namespace ZET::Test
