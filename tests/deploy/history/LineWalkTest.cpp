#include <gtest/gtest.h>

#include "deploy/history/LineAges.h"
#include "deploy/history/TextDiffer.h"

namespace ZET::Deploy {
namespace {

using Steps = std::vector<std::optional<std::size_t>>;

class LineWalkTest : public testing::Test {
  protected:
    /// Walks from `text` back through the older texts, null for no file.
    Steps Walk(const std::string& text, const std::vector<const char*>& older) {
        LineWalk walk(text, [this](const std::string& one, const std::string& other) {
            ++m_diffs;
            return m_differ.Diff(&one, &other, "text");
        });
        for (std::size_t step = 0; step < older.size(); ++step) {
            const std::string former = older[step] == nullptr ? "" : older[step];
            walk.StepBack(older[step] == nullptr ? nullptr : &former, step);
        }
        m_isDone = walk.IsDone();
        return walk.Steps();
    }

    TextDiffer m_differ;
    int m_diffs = 0;
    bool m_isDone = false;
};

TEST_F(LineWalkTest, LineCameWithTheStepWhoseOlderTextLacksIt) {
    EXPECT_EQ(Walk("a\nnew\nb\n", {"a\nnew\nb\n", "a\nb\n"}), (Steps{std::nullopt, 1, std::nullopt}));
    EXPECT_FALSE(m_isDone);
}

TEST_F(LineWalkTest, LineThatMovedIsFollowed) {
    EXPECT_EQ(Walk("1\n2\n3\nx\n", {"x\n", "y\n"}), (Steps{0, 0, 0, 1}));
    EXPECT_TRUE(m_isDone);
}

TEST_F(LineWalkTest, EqualLineElsewhereIsAnotherLine) {
    EXPECT_EQ(Walk("same\nmiddle\nsame\n", {"same\nmiddle\n", "same\nmiddle\n"}),
              (Steps{std::nullopt, std::nullopt, 0}));
}

TEST_F(LineWalkTest, LineThatWentAndCameAgainCameAgain) {
    EXPECT_EQ(Walk("a\nx\n", {"a\n", "a\nx\n"}), (Steps{std::nullopt, 0}));
}

TEST_F(LineWalkTest, AllOfANewFileCameWithIt) {
    EXPECT_EQ(Walk("a\nb\n", {"a\nb\n", nullptr}), (Steps{1, 1}));
    EXPECT_EQ(m_diffs, 0);
}

TEST_F(LineWalkTest, LineThatGetsItsLineFeedIsNotTheSame) {
    EXPECT_EQ(Walk("a\nb\n", {"a\nb"}), (Steps{std::nullopt, 0}));
}

TEST_F(LineWalkTest, TextOfAnyBytesIsWalkedThrough) {
    EXPECT_EQ(Walk("\377\n\1\n", {"\377\n"}), (Steps{std::nullopt, 0}));
}

TEST_F(LineWalkTest, EmptyTextHasNoLines) {
    EXPECT_TRUE(Walk("", {"a\n"}).empty());
    EXPECT_TRUE(m_isDone);
}

}  // namespace
}  // namespace ZET::Deploy
