#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <fstream>
#include <new>

#include "Support.h"
#include "SystemCalls.h"

namespace ZET::Test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// Of the processor, however busy the machine is otherwise.
double UsedSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

class RegEx : public HostFixture {
  protected:
    RegEx() { Start(""); }

    bool Matches(const std::string& pattern, const std::string& subject) {
        return Core().MatchRegEx(pattern, subject, nullptr, 0);
    }

    /// The message for a search that must give up, and soon.
    std::string Refusal(const std::string& pattern, const std::string& subject) {
        const double start = UsedSeconds();
        const std::string message = MessageOf<EZETError>([&] { Matches(pattern, subject); });
        EXPECT_LT(UsedSeconds() - start, 20);
        return message;
    }

    void ExpectGivingUp(const std::string& pattern, const std::string& subject) {
        EXPECT_THAT(Refusal(pattern, subject),
                    StartsWith("Regular expression '" + pattern + "' gives up on a text of " +
                               std::to_string(subject.size()) + " bytes: "));
    }
};

TEST_F(RegEx, PatternIsSearchedForAnywhere) {
    EXPECT_TRUE(Matches("b+", "abbc"));
    EXPECT_FALSE(Matches("^b+", "abbc"));
    EXPECT_FALSE(Matches("x", "abbc"));
}

TEST_F(RegEx, PatternsOfTheEngineSelectTheirLines) {
    const std::string set = "^#*\\s*name=";
    for (const char* line : {"name=", "name=x", "##name=x", "# \tname=x", "  name=x"})
        EXPECT_TRUE(Matches(set, line)) << line;
    for (const char* line : {"", "name =x", " #name=x", "xname=", "# --PRE-ZET-- name=x"})
        EXPECT_FALSE(Matches(set, line)) << line;
    EXPECT_TRUE(Matches("^# --PRE-ZET-- #*\\s*name=", "# --PRE-ZET-- #name=x"));
}

TEST_F(RegEx, NamesOfAnyLengthAreComparedToTheirEnd) {
    for (std::size_t size = 1; size < 100; ++size) {
        const std::string name(size, 'n');
        for (const std::string opening : {"^", "^\\s*", "^#*\\s*"}) {
            const std::string pattern = opening + name + "=";
            EXPECT_TRUE(Matches(pattern, name + "=x")) << size;
            EXPECT_FALSE(Matches(pattern, name)) << size;
            for (std::size_t place = 0; place < size; ++place) {
                std::string other = name + "=";
                other[place] = 'm';
                EXPECT_FALSE(Matches(pattern, other)) << size << " " << place;
            }
        }
    }
}

TEST_F(RegEx, EmptyPatternIsFoundEverywhere) {
    EXPECT_TRUE(Matches("", ""));
    EXPECT_TRUE(Matches("", "x"));
}

TEST_F(RegEx, EmptySubjectCanMatch) {
    EXPECT_TRUE(Matches("^$", ""));
    EXPECT_FALSE(Matches(".", ""));
}

TEST_F(RegEx, NulByteInTheSubjectIsAByte) {
    const std::string subject("a\0b", 3);
    EXPECT_TRUE(Matches("^a.b$", subject));
    EXPECT_TRUE(Matches("a\\x00b", subject));
    EXPECT_TRUE(Matches("b", subject));
    EXPECT_FALSE(Matches("^a$", subject));
}

TEST_F(RegEx, NulByteInThePatternIsAByte) {
    const std::string pattern("a\0b", 3);
    EXPECT_TRUE(Matches(pattern, std::string("a\0b", 3)));
    EXPECT_FALSE(Matches(pattern, "a"));
    EXPECT_FALSE(Matches(pattern, std::string("a\0c", 3)));
}

TEST_F(RegEx, BytesAreNotTakenForCharacters) {
    EXPECT_TRUE(Matches("^..$", "\xc3\xa4"));
    EXPECT_TRUE(Matches("^\\xff\\xfe$", "\xff\xfe"));
    EXPECT_FALSE(Matches("^\\w$", "\xe4"));
}

TEST_F(RegEx, PatternCannotAskForCharacters) {
    EXPECT_THAT(Refusal("(*UTF)a", "a"), StartsWith("Regular expression '(*UTF)a' is not valid"));
}

TEST_F(RegEx, CarriageReturnIsNoEndOfALine) {
    EXPECT_FALSE(Matches("a$", "a\r"));
    EXPECT_TRUE(Matches("^a.$", "a\r"));
}

TEST_F(RegEx, InvalidPatternIsNamedWithPlaceAndReason) {
    EXPECT_EQ(Refusal("a(b", "x"),
              "Regular expression 'a(b' is not valid at offset 3: missing closing parenthesis.");
    EXPECT_THAT(Refusal("a(b", "x"), HasSubstr("a(b")) << "the second time";
}

TEST_F(RegEx, InvalidPatternLeavesTheOthersUsable) {
    EXPECT_TRUE(Matches("abc", "abc"));
    Refusal("*", "x");
    EXPECT_TRUE(Matches("abc", "abc"));
    EXPECT_FALSE(Matches("abc", "abd"));
}

TEST_F(RegEx, PatternInAMessageIsPrintable) {
    EXPECT_THAT(Refusal(std::string("(\n\0", 3), "x"),
                StartsWith("Regular expression '(\\n\\x00' is not valid"));
}

TEST_F(RegEx, PatternThatIsTooLargeIsRefused) {
    EXPECT_THAT(Refusal("((((a{1,100}){1,100}){1,100}){1,100})", "a"), HasSubstr("too large"));
}

TEST_F(RegEx, CatastrophicPatternGivesUpSoonAndIsNamed) {
    ExpectGivingUp("(a+)+$", std::string(40, 'a') + "!");
    ExpectGivingUp("(a|aa)+(?:b|c)", std::string(1000, 'a'));
    ExpectGivingUp("^(\\w+\\s?)*$", std::string(5000, 'a') + "!");
}

TEST_F(RegEx, CatastrophicPatternGivesUpSoonWithoutMachineCode) {
    ExpectGivingUp("(*NO_JIT)(a+)+$", std::string(40, 'a') + "!");
}

TEST_F(RegEx, WorkThatGrowsWithTheSquareOfALongLineGivesUpSoon) {
    const std::string blanks(5'000'000, ' ');
    ExpectGivingUp("\\s+name=", blanks);
    ExpectGivingUp("^.*.*x", blanks);
    ExpectGivingUp("(?> +)x", blanks);
}

TEST_F(RegEx, WorkThatGrowsWithTheFourthPowerGivesUpSoon) {
    ExpectGivingUp("a*a*a*(?:b|c)", std::string(1024, 'a'));
    ExpectGivingUp("a*a*a*(?:b|c)", std::string(100'000, 'a'));
}

TEST_F(RegEx, PatternAfterOneThatGaveUpWorks) {
    ExpectGivingUp("(a+)+$", std::string(40, 'a') + "!");
    EXPECT_TRUE(Matches("(a+)+$", std::string(40, 'a')));
    EXPECT_TRUE(Matches("^b", "b"));
    EXPECT_TRUE(Matches("b$", std::string(100'000, 'a') + "b"));
}

TEST_F(RegEx, LongLineIsSearchedToItsEnd) {
    std::string line(5'000'000, 'x');
    EXPECT_FALSE(Matches("^#*\\s*name=", line));
    EXPECT_FALSE(Matches("name=", line));
    line += "name=";
    EXPECT_TRUE(Matches("name=", line));
    EXPECT_TRUE(Matches(".*name=$", line));
    EXPECT_TRUE(Matches("^#*\\s*name=", "#" + std::string(5'000'000, ' ') + "name="));
}

TEST_F(RegEx, ResultIsTheSameForShortAndLongLines) {
    for (const std::size_t size : {1U, 1000U, 1020U, 1024U, 1030U, 5000U}) {
        const std::string line(size, 'a');
        EXPECT_TRUE(Matches("a$", line)) << size;
        EXPECT_TRUE(Matches("^(?:a|b)*$", line)) << size;
        EXPECT_TRUE(Matches("^(a|b)*$", line)) << size;
        EXPECT_FALSE(Matches("^(a|b)*c$", line)) << size;
        EXPECT_TRUE(Matches("^a*(?1)?(a?)$", line)) << size;
        EXPECT_FALSE(Matches("(?!a).", line)) << size;
    }
}

TEST_F(RegEx, MatchThatNeedsADeepStackIsFoundByTheInterpreter) {
    // More groups are open than the machine code's stack holds.
    EXPECT_TRUE(Matches("^(?:(a)|b)*$", std::string(150'000, 'a')));
}

TEST_F(RegEx, NestingBeyondAllMemoryGivesUp) {
    EXPECT_THAT(Refusal("^((a)(?1)|x)", std::string(5'000'000, 'a')), HasSubstr("limit exceeded"));
}

TEST_F(RegEx, ArgumentsThatMeanNothingAreRefused) {
    int something = 0;
    EXPECT_EQ(MessageOf<EZETCheckError>([&] { Core().MatchRegEx("a", "a", &something, 0); }),
              "Invalid argument for 'MatchRegEx'.");
    MessageOf<EZETCheckError>([&] { Core().MatchRegEx("a", "a", nullptr, 1); });
}

TEST_F(RegEx, PatternsAlternateWithoutConfusion) {
    for (int round = 0; round < 3; round++)
        for (int i = 0; i < 100; i++) {
            const std::string name = "name" + std::to_string(i);
            EXPECT_TRUE(Matches("^" + name + "=", name + "=1"));
            EXPECT_FALSE(Matches("^" + name + "=", name + "1="));
        }
}

TEST_F(RegEx, PatternThatWasOverwrittenInPlaceIsAnother) {
    std::string pattern = "aaaa";
    EXPECT_TRUE(Matches(pattern, "aaaa"));
    pattern[3] = 'b';
    EXPECT_FALSE(Matches(pattern, "aaaa"));
}

TEST_F(RegEx, MatchAfterOneThatRanOutOfMemoryIsAsIfThereHadBeenNone) {
    // The last two are for a subject that is too long for the fast way.
    const std::string subject = std::string(5000, 'a') + "b";
    for (const char* name : {"pcre2_compile_context_create", "pcre2_match_context_create",
                             "pcre2_match_data_create", "pcre2_jit_stack_create"}) {
        for (int turn = 1; turn <= 2; turn++) {
            Start("");
            {
                SystemCalls calls;
                calls.Fail(name, ENOMEM, turn, true);
                try {
                    Matches("a+b", subject);
                } catch (const std::bad_alloc&) {
                }
                EXPECT_FALSE(calls.Calls({name}).empty()) << name;
            }
            EXPECT_TRUE(Matches("a+b", subject)) << name;
            EXPECT_FALSE(Matches("a+b", "b")) << name;
        }
    }
}

std::size_t ResidentBytes() {
    std::size_t all = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

TEST_F(RegEx, MemoryForPatternsIsBounded) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer keeps freed memory";
#endif
    const auto use = [&](int first, int last) {
        for (int i = first; i < last; i++)
            Matches("^(?:" + std::string(2000, 'x') + std::to_string(i) + ")+$", "x");
    };
    use(0, 200);
    const std::size_t before = ResidentBytes();
    use(200, 4200);
    EXPECT_LT(ResidentBytes(), before + 4'000'000) << "one such pattern takes 20 KB and more";
}

TEST_F(RegEx, PatternIsCompiledOncePerPatternAndNotOncePerLine) {
    // Compiling this one takes 100 us and more, looking it up far less than 1 us.
    const std::string pattern = "^(?:" + std::string(20'000, 'x') + "|[a-z]{1,200}=)";
    Matches(pattern, "a");
    const double start = UsedSeconds();
    for (int i = 0; i < 20'000; i++)
        Matches(pattern, "A");
    EXPECT_LT(UsedSeconds() - start, 0.3);
}

}  // namespace
}  // namespace ZET::Test
