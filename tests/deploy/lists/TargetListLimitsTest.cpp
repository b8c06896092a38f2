#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <ctime>
#include <utility>

#include "ListTexts.h"

namespace ZET::Deploy {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Repeated(const std::string& text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST(TargetListLimits, LongLinesAndListsAreRefused) {
    EXPECT_THAT(ProblemsOf("#" + std::string(65535, 'x') + "\n"), IsEmpty());
    EXPECT_THAT(
        ProblemsOf("\n#" + std::string(65536, 'x') + "\n"),
        ElementsAre("LIST:2: is longer than 65536 bytes (shorten the line; an array may go over several)"));
    EXPECT_THAT(ProblemsOf(Repeated("#\n", std::size_t{8} * 1024 * 1024)), IsEmpty());
    EXPECT_THAT(
        ProblemsOf(Repeated("#\n", std::size_t{8} * 1024 * 1024) + "#"),
        ElementsAre("LIST: the list of targets is larger than 16 MiB (take out what does not belong there)"));
}

TEST(TargetListLimits, DepthIsBounded) {
    constexpr char kDots[] =
        "LIST:1: has more than 500 dots (shorten the line; an array may go over several)";
    EXPECT_THAT(ProblemsOf("a" + Repeated(".a", 32000) + " = 1\n"), ElementsAre(kDots));
    EXPECT_THAT(ProblemsOf("[a" + Repeated(".a", 32000) + "]\n"), ElementsAre(kDots));
    for (const std::string open : {"[", "a = [", "a = {", "a = { a = [", "{"}) {
        for (const std::string text : {"[", "{", "{a=", "[{a="}) {
            const std::string line = open + Repeated(text, 65000 / text.size() - 10);
            EXPECT_THAT(ProblemsOf(line), ElementsAre(testing::StartsWith("LIST:1:"))) << open << text;
        }
    }
}

/// What the problems of the text are to a thread that has 2 MiB for its calls.
std::vector<std::string> ProblemsOnASmallStack(std::string text) {
    std::pair<std::string, std::vector<std::string>> work = {std::move(text), {}};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{2} * 1024 * 1024);
    const auto run = [](void* given) -> void* {
        auto& [list, problems] = *static_cast<decltype(work)*>(given);
        problems = ProblemsOf(list);
        return nullptr;
    };
    pthread_t thread = {};
    EXPECT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return work.second;
}

TEST(TargetListLimits, DeepestListThatIsReadFitsOnASmallStack) {
    const std::string key = "a" + Repeated(".a", 499);
    std::string text = "[" + key + "]\n";
    for (int i = 0; i < 3; ++i)
        text += key + " = [\n{ ";
    text += key + " = 1 " + Repeated("}\n]", 3) + "\n";
    EXPECT_THAT(
        ProblemsOnASmallStack(text),
        ElementsAre("LIST:1:2: unknown key \"a\" (put what a template has below [templates.\"NAME\"])"));
    EXPECT_THAT(ProblemsOnASmallStack("[templates" + Repeated(".a", 500) + "]\n" + key + " = 1"),
                ElementsAre(testing::HasSubstr("is not quoted")));
}

double SecondsFor(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text +=
            Entry("check = [\"true\", \"{}\"]\nrestart = { server = [\"a\"] }\nwrong = 1", std::to_string(i));
    const std::clock_t begin = std::clock();
    const TargetList list = ReadTargetText("LIST", text);
    EXPECT_EQ(list.targets.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(list.problems.size(), static_cast<std::size_t>(count));
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

TEST(TargetListLimits, TimeGrowsWithTheList) {
    const double few = SmallestTime(SecondsFor, 10000);
    const double many = SmallestTime(SecondsFor, 40000);
    EXPECT_LT(many, 8 * few);
}

}  // namespace
}  // namespace ZET::Deploy
