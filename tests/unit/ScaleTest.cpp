#include "ChildProcess.h"
#include "ModuleTest.h"

namespace ZET {
namespace {

using namespace std::chrono_literals;

// Far more than needed where the work grows with the text, far too little where it grows with its square.
constexpr auto kGenerous = 10s;

std::string Repeated(const std::string& piece, std::size_t times) {
    std::string text;
    text.reserve(piece.size() * times);
    for (std::size_t i = 0; i < times; ++i)
        text += piece;
    return text;
}

class ScaleTest : public ModuleTest {
  protected:
    /// Big texts are compared, not shown.
    void ExpectEdit(const std::string& text, const std::string& expected,
                    const std::function<void(IZETConfigFile&)>& edit, bool noMarkers = true) {
        ExpectChildPasses(kGenerous, [&] {
            const std::string result = Edited(text, edit, noMarkers);
            EXPECT_EQ(result.size(), expected.size());
            EXPECT_TRUE(result == expected);
        });
    }

    static std::function<void(IZETConfigFile&)> Apply(StringMap values) {
        return [values](IZETConfigFile& file) mutable { file.ApplyTemplates(values); };
    }
};

TEST_F(ScaleTest, LineOfManyPlaceholdersCostsStepsOnlyForEach) {
    ExpectEdit(Repeated("some text ${value} ", 250000), Repeated("some text longer than its name ", 250000),
               Apply({{"${value}", "longer than its name"}}));
}

TEST_F(ScaleTest, LineOfManyPlaceholdersThatVanishCostsStepsOnlyForEach) {
    ExpectEdit(Repeated("${a_name_longer_than_its_value}.", 160000) + "\n", Repeated(".", 160000) + "\n",
               Apply({{"${a_name_longer_than_its_value}", ""}}));
}

TEST_F(ScaleTest, LineOfManyUnknownPlaceholdersCostsStepsOnlyForEach) {
    ExpectEdit(Repeated("some more text ${no} ", 100000), Repeated("some more text !{no} ", 100000),
               Apply({}));
}

TEST_F(ScaleTest, ValueOfManyPlaceholdersCostsStepsOnlyForEach) {
    ExpectEdit("${all}", Repeated("x", 200000),
               Apply({{"${all}", Repeated("${one}", 200000)}, {"${one}", "x"}}));
}

TEST_F(ScaleTest, LongChainOfValuesIsFollowedToItsEnd) {
    StringMap values;
    for (int i = 0; i < 20000; ++i)
        values["${" + std::to_string(i) + "}"] = "${" + std::to_string(i + 1) + "}";
    values["${20000}"] = "end";
    ExpectEdit("${0}\n", "end\n", Apply(values));
}

TEST_F(ScaleTest, ChainOfValuesWithTextAroundCostsStepsOnlyForEach) {
    StringMap values;
    for (int i = 0; i < 20000; ++i)
        values["${" + std::to_string(i) + "}"] = "(${" + std::to_string(i + 1) + "})";
    values["${20000}"] = "";
    ExpectEdit("${0}\n", std::string(20000, '(') + std::string(20000, ')') + "\n", Apply(values));
}

TEST_F(ScaleTest, LongLineIsReplaced) {
    const std::string line = "x=" + std::string(5000000, 'y');
    ExpectEdit(
        "a\n" + line + "\nb\n", "a\n" + kFormer + line + "\n" + kBegin + line + "z\n" + kEnd + "b\n",
        [&](IZETConfigFile& file) { file.SetLine("^x=", line + "z"); }, false);
}

TEST_F(ScaleTest, LongLineIsFoundAndKept) {
    const std::string line = "x=" + std::string(5000000, 'y');
    ExpectEdit("a\n" + line, "a\n" + line, [&](IZETConfigFile& file) {
        EXPECT_TRUE(file.GetLine("^x=") == line);
        EXPECT_TRUE(file.GetParamValue("x") == line.substr(2));
    });
}

TEST_F(ScaleTest, LongLineIsRestored) {
    const std::string line = "x=" + std::string(5000000, 'y');
    ExpectEdit(kFormer + line + "\n" + kBegin + line + "\n" + kEnd, line + "\n",
               [&](IZETConfigFile& file) { file.RestoreLine("^x="); });
}

TEST_F(ScaleTest, ManyBlocksAreTakenOut) {
    ExpectEdit(Repeated("a\n" + kBegin + "x\n" + kEnd, 100000), Repeated("a\n", 100000),
               [](IZETConfigFile& file) { file.RemoveZETMarkers(); });
}

TEST_F(ScaleTest, ManyEmptyLinesAtTheTopVanish) {
    const std::string path = Write("a.conf", Repeated("\n", 3000000) + "x\n");
    ExpectChildPasses(kGenerous, [&] {
        CZETConfigFile file(m_core);
        EXPECT_TRUE(file.Open(path, "", false));
        file.Save(true);
    });
    EXPECT_EQ(Read("a.conf"), kPartialNotice + "x\n");
}

}  // namespace
}  // namespace ZET
