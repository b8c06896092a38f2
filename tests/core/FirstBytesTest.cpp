#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "Support.h"

namespace ZET::Test {
namespace {

/// More searches than it takes until a pattern is looked at for the bytes that no match begins with.
constexpr int kManySearches = 1100;

struct FreeCode {
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
};
struct FreeData {
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};
struct FreeContext {
    void operator()(pcre2_compile_context* context) const { pcre2_compile_context_free(context); }
};

PCRE2_SPTR Bytes(const std::string& text) {
    return reinterpret_cast<PCRE2_SPTR>(text.data());
}

/// The library by itself, as plain as can be.
class PlainPattern {
  public:
    explicit PlainPattern(const std::string& pattern) {
        const std::unique_ptr<pcre2_compile_context, FreeContext> context(
            pcre2_compile_context_create(nullptr));
        pcre2_set_newline(context.get(), PCRE2_NEWLINE_LF);
        int error = 0;
        PCRE2_SIZE offset = 0;
        m_code.reset(
            pcre2_compile(Bytes(pattern), pattern.size(), PCRE2_NEVER_UTF, &error, &offset, context.get()));
        if (m_code != nullptr) pcre2_jit_compile(m_code.get(), PCRE2_JIT_COMPLETE);
    }

    bool IsValid() const { return m_code != nullptr; }

    bool Matches(const std::string& subject) const {
        return pcre2_match(m_code.get(), Bytes(subject), subject.size(), 0, 0, m_data.get(), nullptr) >= 0;
    }

  private:
    std::unique_ptr<pcre2_code, FreeCode> m_code;
    std::unique_ptr<pcre2_match_data, FreeData> m_data{pcre2_match_data_create(1, nullptr)};
};

class FirstBytes : public HostFixture {
  protected:
    FirstBytes() { Start(""); }

    bool Matches(const std::string& pattern, const std::string& subject) {
        return Core().MatchRegEx(pattern, subject, nullptr, 0);
    }

    void SearchOften(const std::string& pattern) {
        for (int i = 0; i < kManySearches; ++i)
            Matches(pattern, "");
    }

    /// Some of these, one behind the other.
    std::string Joined(const std::vector<std::string>& pieces, std::size_t most) {
        std::string joined;
        for (std::size_t count = m_random() % (most + 1); count > 0; --count)
            joined += pieces[m_random() % pieces.size()];
        return joined;
    }

    /// Most begin at the start of the subject, in one way or another.
    std::string AnyPattern() {
        static const std::vector<std::string> starts = {"^",           "^",     "^",   "\\A",   "^#*\\s*",
                                                        "(^a|^b)",     "(^|b)", "\\G", "(?m)^", "(?im:^)",
                                                        "\\A\\n(?m)^", ".*",    ""};
        static const std::vector<std::string> items = {
            "a",     "b",     "=",         "ab=",      "ab",       "#",         " ",         "\\n",
            "\\s*",  "\\s",   "\\w+",      "[^a]",     "[ab]?",    "a*+",       "b+?",       "#*",
            "(a|b)", "(a|)",  "(\\n|$)++", "\\b",      "\\B",      "$",         "\\Z",       "\\z",
            "(?!a)", "(?=b)", "(?<!a)",    "(?<=b)",   "(?:ab|#)", "(?>a|ab)",  ".",         "\\R",
            "\\X",   "\\C",   "|",         "|^",       "(a)\\1",   "(?i)",      "(?s).",     "(?m)^",
            "\\K",   "\\N",   "\\x00",     "[^\\x80]", "\\xe4",    "(*ACCEPT)", "(*COMMIT)", "(*F)|"};
        return starts[m_random() % starts.size()] + Joined(items, 4);
    }

    std::string AnySubject() {
        static const std::vector<std::string> bytes = {"a",
                                                       "b",
                                                       "A",
                                                       "#",
                                                       " ",
                                                       "\t",
                                                       "\n",
                                                       "\r",
                                                       "\r\n",
                                                       "=",
                                                       "-",
                                                       "# --",
                                                       "ab=",
                                                       "=",
                                                       "\xe4",
                                                       "\x80",
                                                       std::string(1, '\0')};
        return Joined(bytes, 5);
    }

  private:
    std::mt19937 m_random{7};
};

TEST_F(FirstBytes, PatternThatWasSearchedForOftenFindsWhatItFoundBefore) {
    const std::string pattern = "^#*\\s*name=";
    SearchOften(pattern);
    for (const char* line : {"name=", "name=x", "##name=x", "# \tname=x", "  name=x", "\nname=x", "\rname="})
        EXPECT_TRUE(Matches(pattern, line)) << line;
    for (const char* line : {"", "name =x", " #name=x", "xname=", "-name=", "# --PRE-ZET-- name=x"})
        EXPECT_FALSE(Matches(pattern, line)) << line;
}

TEST_F(FirstBytes, LineFeedThatIsNotTheLastByteIsNotTakenForOneThatIs) {
    const std::string pattern = "^($|\\n)++b";
    SearchOften(pattern);
    EXPECT_TRUE(Matches(pattern, "\nb"));
}

TEST_F(FirstBytes, OptionInsideAPatternIsHeeded) {
    const std::string pattern = "^\\s(?m)^b";
    SearchOften(pattern);
    EXPECT_TRUE(Matches(pattern, "\nb"));
    EXPECT_FALSE(Matches(pattern, "\tb"));
}

TEST_F(FirstBytes, PatternsFindTheSameBeforeAndAfterManySearches) {
    constexpr int kPatterns = 4000;
    constexpr int kSubjects = 80;
    for (int i = 0; i < kPatterns; ++i) {
        const std::string pattern = AnyPattern();
        const PlainPattern plain(pattern);
        if (!plain.IsValid()) continue;
        SearchOften(pattern);
        for (int j = 0; j < kSubjects; ++j) {
            const std::string subject = AnySubject();
            ASSERT_EQ(Matches(pattern, subject), plain.Matches(subject))
                << testing::PrintToString(pattern) << " in " << testing::PrintToString(subject);
        }
    }
}

TEST_F(FirstBytes, TextThatAPatternBeginsWithIsFoundBehindSignsAndBlanks) {
    for (const char* pattern : {"^a*=",
                                "^#*\\s*name=",
                                "^\\s*b",
                                "^# --a #*\\s*b=",
                                "^\\s*a#*",
                                "^#*#b",
                                "^a\\s*#*b=",
                                "^#*\\s",
                                "^",
                                "^#*",
                                "^#*\\s*parameter_17=",
                                "^\\s*parameter_17",
                                "^#a",
                                "^ a",
                                "^\\s* a",
                                "^\\s*\\s*b",
                                "^#*\\s*==",
                                "^\\s*\\s",
                                "^#*\\sb",
                                "^ab"}) {
        const PlainPattern plain(pattern);
        for (const char* subject :
             {"",     "=",        "a=",          "=a=",  "name=", "# name=x=", "name==", "nam=name=", "b",
              "  b",  "# --a b=", "# --a ## b=", "a",    "a#",    "##b",       "#b",     "a #b=",     "#\t",
              "   b", "==",       "#===",        "# ==", "#b b",  " b",        "ab",     "xab"})
            EXPECT_EQ(Matches(pattern, subject), plain.Matches(subject)) << pattern << " in " << subject;
    }
}

/// Of the form that the system makes, some of them nearly: these are matched without the library.
TEST_F(FirstBytes, ParameterIsFoundAsTheLibraryFindsIt) {
    static const std::vector<std::string> openings = {
        "^", "^#*", "^\\s*", "^#*\\s*", "^\\s*#*", "#*\\s*", "^# --PRE-ZET-- #*\\s*"};
    static const std::vector<std::string> texts = {"",
                                                   "#",
                                                   " ",
                                                   "\t",
                                                   "\v",
                                                   "\n",
                                                   "\r",
                                                   "ab",
                                                   "a",
                                                   "=",
                                                   "-",
                                                   ".",
                                                   "\\",
                                                   "\x80",
                                                   "# --PRE-ZET-- ",
                                                   std::string(1, '\0')};
    constexpr int kPatterns = 2000;
    constexpr int kSubjects = 60;
    for (int i = 0; i < kPatterns; ++i) {
        const std::string pattern = Joined(openings, 1) + Joined(texts, 3);
        const PlainPattern plain(pattern);
        if (!plain.IsValid()) continue;
        for (int j = 0; j < kSubjects; ++j) {
            const std::string subject = Joined(texts, 6);
            ASSERT_EQ(Matches(pattern, subject), plain.Matches(subject))
                << testing::PrintToString(pattern) << " in " << testing::PrintToString(subject);
        }
    }
}

TEST_F(FirstBytes, EveryFirstByteIsJudgedAsTheLibraryJudgesIt) {
    constexpr int kPatterns = 300;
    for (int i = 0; i < kPatterns; ++i) {
        const std::string pattern = AnyPattern();
        const PlainPattern plain(pattern);
        if (!plain.IsValid()) continue;
        SearchOften(pattern);
        for (int byte = 0; byte < 256; ++byte) {
            const std::string subject = static_cast<char>(byte) + AnySubject();
            ASSERT_EQ(Matches(pattern, subject), plain.Matches(subject))
                << testing::PrintToString(pattern) << " in " << testing::PrintToString(subject);
        }
    }
}

}  // namespace
}  // namespace ZET::Test
