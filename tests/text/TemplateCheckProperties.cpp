#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "RecordingCore.h"
#include "TemplateLines.h"
#include "ZETConfigFile.h"
#include "text/TemplateCheck.h"
#include "zet/ZETFormat.h"

namespace ZET::Text {

namespace {

using namespace std::chrono_literals;

/// Far more than an expansion within the limits takes, with room for a loaded machine.
constexpr auto kLongEnough = 20s;

/// What an endless expansion is given; it grows without end or goes round without growing.
constexpr auto kShortWhile = 20ms;
constexpr rlim_t kMemory = rlim_t{1} << 30;

enum class End { Finished, RunsOn, OutOfBounds };

/// Expands the text with the module's own engine, which is never to be trusted to return.
[[noreturn]] void Expand(const std::string& file, StringMap values) {
    const struct rlimit limit = {kMemory, kMemory};
    setrlimit(RLIMIT_AS, &limit);
    // Unknown placeholders are logged; nobody reads it here.
    if (std::freopen("/dev/null", "w", stderr) == nullptr) _exit(2);
    try {
        RecordingCore core;
        CZETConfigFile config(core);
        if (!config.Open(file, "server", true)) _exit(2);
        config.ApplyTemplates(values);
    } catch (...) {
        _exit(1);
    }
    _exit(0);
}

End WaitFor(pid_t child, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return End::RunsOn;
        }
        std::this_thread::sleep_for(200us);
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return End::Finished;
    return End::OutOfBounds;
}

class TemplateCheckProperties : public testing::Test {
  protected:
    TemplateCheckProperties() {
        std::string name = "/tmp/zet-check.XXXXXX";
        const int descriptor = mkstemp(name.data());
        if (descriptor >= 0) close(descriptor);
        m_file = name;
    }
    ~TemplateCheckProperties() override { std::filesystem::remove(m_file); }

    End EndOfExpansion(const std::string& text, const StringMap& values, std::chrono::milliseconds limit) {
        std::ofstream(m_file, std::ios::binary) << text;
        const pid_t child = fork();
        if (child == 0) Expand(m_file, values);
        return WaitFor(child, limit);
    }

  private:
    std::string m_file;
};

/// Few names, so that values lead to each other; with pieces that only together are a placeholder.
const std::vector<std::string> kPieces = {"${a}", "${b}", "${c}",  "${d}", "${", "}", "$",
                                          "{",    "a",    "x ",    "#",    "!",  "",  "${a",
                                          "b}",   "${}",  "${ a}", "\t",   "c}", "\r"};

rc::Gen<std::string> Joined(const std::vector<std::string>& pieces, std::size_t most) {
    return rc::gen::map(rc::gen::resize(static_cast<int>(most), rc::gen::container<std::vector<std::string>>(
                                                                    rc::gen::elementOf(pieces))),
                        [](const std::vector<std::string>& parts) {
                            std::string text;
                            for (const std::string& part : parts)
                                text += part;
                            return text;
                        });
}

rc::Gen<StringMap> Values() {
    return rc::gen::map(rc::gen::container<std::vector<std::string>>(5, Joined(kPieces, 6)),
                        [](const auto& values) {
                            const std::vector<std::string> names = {"${a}", "${b}", "${c}", "${d}", "${}"};
                            StringMap map;
                            for (std::size_t i = 0; i < names.size(); ++i)
                                map[names[i]] = values[i];
                            return map;
                        });
}

rc::Gen<std::string> Template() {
    std::vector<std::string> lines = kPieces;
    for (const std::string line : {"\n", "\n", "\n# ", "\n"})
        lines.push_back(line);
    for (const char* marker : {ZETTemplateCommentMarker, ZETCommentEndMarker, ZETBeginMarker, ZETEndMarker})
        lines.push_back("\n" + std::string(marker) + "\n");
    return Joined(lines, 30);
}

bool TellsOfNoEnd(const std::vector<Problem>& problems) {
    for (const Problem& problem : problems) {
        if (problem.text.find("has no \"}\"") != std::string::npos ||
            problem.text.find("does not end") != std::string::npos)
            return true;
    }
    return false;
}

RC_GTEST_FIXTURE_PROP(TemplateCheckProperties, VerdictOnTheEndIsThatOfTheEngine, ()) {
    const StringMap values = *Values();
    const std::string text = *Template();
    const bool isEndless = TellsOfNoEnd(CheckTemplate("t", LinesOf(text), values));
    RC_CLASSIFY(isEndless, "endless");
    const End end = EndOfExpansion(text, values, isEndless ? kShortWhile : kLongEnough);
    RC_ASSERT((end == End::Finished) != isEndless);
}

TEST_F(TemplateCheckProperties, ManyUnknownPlaceholdersInACommentDoNotHideOneWithoutEnd) {
    std::string line;
    for (int i = 0; i < 1000; ++i)
        line += "${unknown}";
    const std::string text = "# --ZET_TEMPLATE_COMMENT--\n" + line + "${\n# --ZET_COMMENT_END--\n";
    ASSERT_EQ(EndOfExpansion(text, {}, kShortWhile), End::RunsOn);
    EXPECT_TRUE(TellsOfNoEnd(CheckTemplate("t", LinesOf(text), {})));
}

TEST_F(TemplateCheckProperties, LongKeyThatReproducesItselfIsSeenInAComment) {
    const std::string key = "${" + std::string(5000, 'k') + "}";
    const std::string text = "# --ZET_TEMPLATE_COMMENT--\n" + key + "\n# --ZET_COMMENT_END--\n";
    ASSERT_EQ(EndOfExpansion(text, {{key, key}}, kShortWhile), End::RunsOn);
    EXPECT_TRUE(TellsOfNoEnd(CheckTemplate("t", LinesOf(text), {{key, key}})));
}

TEST_F(TemplateCheckProperties, LongLineWithManyPlaceholdersIsFine) {
    std::string text;
    for (int i = 0; i < 250'000; ++i)
        text += "name=${a} and so on;";
    const StringMap values = {{"${a}", "${b}"}, {"${b}", "value"}};
    EXPECT_TRUE(CheckTemplate("t", LinesOf(text), values).empty());
    EXPECT_EQ(EndOfExpansion(text, values, kLongEnough), End::Finished);
}

TEST_F(TemplateCheckProperties, ValuesThatMultiplyEachOtherAreBeyondTheLimits) {
    StringMap values;
    for (int i = 0; i < 40; ++i) {
        const std::string next = "${v" + std::to_string(i + 1) + "}";
        values["${v" + std::to_string(i) + "}"] = next + next;
    }
    values["${v40}"] = "";
    EXPECT_TRUE(TellsOfNoEnd(CheckTemplate("t", LinesOf("${v0}"), values)));
    EXPECT_NE(EndOfExpansion("${v0}", values, kShortWhile), End::Finished);
}

}  // namespace

}  // namespace ZET::Text
