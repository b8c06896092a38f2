#include "deploy/host/DiffSet.h"

#include <filesystem>
#include <string>
#include <vector>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/host/UnifiedDiff.h"

namespace ZET::Deploy {

namespace {

namespace fs = std::filesystem;

class DiffSetTest : public HostFixture {
  protected:
    void Add(const char* former, const char* present) {
        const std::string number = std::to_string(m_pairs.size());
        FilePair pair;
        if (former != nullptr) Write(number + ".old", former);
        if (former != nullptr) pair.oldFile = At(number + ".old");
        if (present != nullptr) Write(number + ".new", present);
        if (present != nullptr) pair.newFile = At(number + ".new");
        m_pairs.push_back(pair);
    }

    void ExpectAsAlone(const std::string& shownPath) const {
        const DiffSet diffs(m_pairs);
        for (std::size_t i = 0; i < m_pairs.size(); ++i)
            EXPECT_EQ(diffs.Of(i, shownPath), UnifiedDiff(m_pairs[i].oldFile, m_pairs[i].newFile, shownPath))
                << "pair " << i;
    }

    std::vector<FilePair> m_pairs;
};

TEST_F(DiffSetTest, MakesTheDiffsThatTheFilesHaveAlone) {
    Add("a\n", "b\n");
    Add("equal\n", "equal\n");
    Add(nullptr, "new\n");
    Add("gone\n", nullptr);
    Add("", "filled\n");
    Add(nullptr, "");
    Add("no line feed", "no line feed\nany more");
    Add("\xff\x01\t\r\n", "\xfe\r\n");
    for (const char* const path : {"/etc/a", "/etc/with blanks", "/etc/with\"\\\n\x01", "relative"})
        ExpectAsAlone(path);
}

TEST_F(DiffSetTest, TakesNoLineOfATextForOneBetweenTexts) {
    const char* const lines =
        "diff -u old/1 new/1\n--- a\n+++ b\n@@ -1 +1 @@\n\\ No newline at end of file\n";
    Add(lines, "- x\n");
    Add("+ x\n", lines);
    Add((std::string(lines) + "x\n").c_str(), lines);
    ExpectAsAlone("/etc/a");
}

TEST_F(DiffSetTest, FollowsLinks) {
    Add("a\n", "b\n");
    Add("c\n", "d\n");
    fs::create_symlink(m_pairs[0].oldFile, At("link"));
    m_pairs[0].oldFile = At("link");
    ExpectAsAlone("/etc/a");
}

TEST_F(DiffSetTest, TellsOfTheOneThatCannotBeCompared) {
    Add("a\n", "b\n");
    Add("c\n", "d\n");
    fs::create_directory(At("directory"));
    m_pairs[1].oldFile = At("directory");
    const DiffSet diffs(m_pairs);
    EXPECT_EQ(diffs.Of(0, "/etc/a"), "--- a/etc/a\n+++ b/etc/a\n@@ -1 +1 @@\n-a\n+b\n");
    EXPECT_THROW(diffs.Of(1, "/etc/b"), Failure);
}

TEST_F(DiffSetTest, HoldsMoreThanOneProcessPrintsAtOnce) {
    const std::string text(10000, 'x');
    for (int i = 0; i < 200; ++i)
        Add((text + std::to_string(i)).c_str(), i % 3 == 0 ? nullptr : text.c_str());
    ExpectAsAlone("/etc/a");
}

}  // namespace

}  // namespace ZET::Deploy
