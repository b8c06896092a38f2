#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Support.h"

namespace ZET::Test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// The grammar of the parameter file.
class ParameterFile : public HostFixture {
  protected:
    std::string Value(const std::string& text, const std::string& key) {
        Start(text);
        return Core().GetParam(key);
    }

    /// The message for a file of this text, without the path that it must begin with.
    std::string Refusal(const std::string& text) {
        const std::string message = MessageOf<EZETError>([&] { Start(text); });
        EXPECT_THAT(message, StartsWith(ConfigFile() + ":"));
        EXPECT_THAT(message, EndsWith(")")) << "no remedy";
        return message.substr(ConfigFile().size());
    }
};

TEST_F(ParameterFile, RefusalTellsFileLineAndRemedyApart) {
    try {
        Start("A=1\n1B=2\n");
        FAIL() << "the line was taken";
    } catch (const EZETHostError& error) {
        EXPECT_EQ(error.GetCause().path, ConfigFile());
        EXPECT_EQ(error.GetCause().line, 2U);
        EXPECT_EQ(error.GetCause().text, "'1B' is no name of a parameter");
        EXPECT_EQ(error.GetCause().remedy, "use letters, digits and \"_\", no digit first");
        EXPECT_EQ(error.GetErrorNumber(), 0);
    }
}

TEST_F(ParameterFile, FileThatCannotBeReadTellsTheNumber) {
    try {
        const CZETHost host(m_directory / "missing.conf");
        FAIL() << "there is no such file";
    } catch (const EZETHostError& error) {
        EXPECT_EQ(error.GetCause().path, m_directory / "missing.conf");
        EXPECT_EQ(error.GetCause().line, 0U);
        EXPECT_EQ(error.GetCause().text, "cannot be read: No such file or directory");
        EXPECT_EQ(error.GetErrorNumber(), ENOENT);
    }
}

TEST_F(ParameterFile, LineGivesNameAndValue) {
    EXPECT_EQ(Value("A_1=one\n_b=two\n", "A_1"), "one");
}

TEST_F(ParameterFile, BlanksBeforeTheNameAreNotPartOfIt) {
    EXPECT_EQ(Value(" \t KEY=v\n", "KEY"), "v");
}

TEST_F(ParameterFile, ValueIsKeptByteForByte) {
    EXPECT_EQ(Value("KEY= a = b \xff\t\r\nX=1\n", "KEY"), " a = b \xff\t\r");
}

TEST_F(ParameterFile, CarriageReturnAtTheEndOfAValueIsWarnedOf) {
    EXPECT_EQ(LoggedBy([&] { Start("A=1\n#\r\n\r\nB=2\r\n"); }),
              "zet: warning: " + ConfigFile() +
                  ":4: the value of B ends with a carriage return (save the file with plain line feeds)\n");
}

TEST_F(ParameterFile, ValueMayBeEmptyEvenWhereThereIsADefault) {
    EXPECT_EQ(Value("ZET_LANG=\n", "ZET_LANG"), "");
}

TEST_F(ParameterFile, LastLineNeedsNoLineFeed) {
    EXPECT_EQ(Value("A=1\nB=2", "B"), "2");
}

TEST_F(ParameterFile, LastOfTwoLinesWins) {
    EXPECT_EQ(Value("A=1\nA=2\n", "A"), "2");
}

TEST_F(ParameterFile, CommentsAndBlankLinesAreLeftOut) {
    EXPECT_EQ(Value("# A=0\n\n \t\r\n  #A = 1 \n#\nA=2\n# ---ZET_BEGIN---\n", "A"), "2");
}

TEST_F(ParameterFile, EmptyFileIsFine) {
    EXPECT_EQ(Value("", "ZET_LANG"), "C");
}

TEST_F(ParameterFile, HashWithinALineBelongsToTheValue) {
    EXPECT_EQ(Value("A=1 # 2\n", "A"), "1 # 2");
}

TEST_F(ParameterFile, LineWithoutEqualsSignIsRefusedWithItsNumber) {
    EXPECT_THAT(Refusal("A=1\n\nDOMAIN example.org\n"), StartsWith(":3: no \"=\" in the line (write"));
}

TEST_F(ParameterFile, BlankBeforeEqualsSignIsRefused) {
    EXPECT_THAT(Refusal("A =1\n"), StartsWith(":1: a blank before \"=\""));
    EXPECT_THAT(Refusal("#\nA\t=1\n"), StartsWith(":2: a blank before \"=\""));
}

TEST_F(ParameterFile, OtherNamesAreRefused) {
    for (const char* name : {"", "1A", "A-B", "A.B", "A B", "\xc3\x84", "export A"})
        EXPECT_THAT(Refusal(std::string(name) + "=1\n"), HasSubstr("is no name of a parameter (use letters"));
}

TEST_F(ParameterFile, NameInAMessageIsPrintable) {
    EXPECT_THAT(Refusal("A\x1b[2J=1\n"), StartsWith(":1: 'A\\x1b[2J' is no name"));
}

TEST_F(ParameterFile, NulByteIsRefused) {
    EXPECT_THAT(Refusal(std::string("A=1\nB=x\0y\n", 10)),
                StartsWith(":2: the line holds a NUL byte (remove it)"));
}

TEST_F(ParameterFile, NulByteInACommentIsLeftOut) {
    EXPECT_EQ(Value(std::string("#\0\nA=1\n", 7), "A"), "1");
}

TEST_F(ParameterFile, MissingFileIsNamedWithReasonAndRemedy) {
    EXPECT_EQ(MessageOf<EZETError>([&] { CZETHost host(ConfigFile()); }),
              ConfigFile() +
                  ": cannot be read: No such file or directory (name a configuration file that "
                  "exists and is readable)");
}

TEST_F(ParameterFile, LinkThatLeadsNowhereIsCalledOne) {
    ASSERT_EQ(::symlink("none", ConfigFile().c_str()), 0);
    EXPECT_EQ(MessageOf<EZETError>([&] { CZETHost host(ConfigFile()); }),
              ConfigFile() + ": is a link that leads nowhere (remove it, or make what it names)");
}

TEST_F(ParameterFile, DirectoryIsRefused) {
    EXPECT_THAT(MessageOf<EZETError>([&] { CZETHost host(m_directory.Path()); }),
                StartsWith(m_directory.Path() + ": cannot be read: not a regular file ("));
}

TEST_F(ParameterFile, PipeIsRefusedAtOnce) {
    ASSERT_EQ(::mkfifo(ConfigFile().c_str(), 0600), 0);
    EXPECT_THAT(MessageOf<EZETError>([&] { CZETHost host(ConfigFile()); }), HasSubstr("not a regular file"));
}

TEST_F(ParameterFile, UnreadableFileIsRefused) {
    if (!IsRoot()) GTEST_SKIP() << "changes to another user";
    WriteText(ConfigFile(), "A=1\n", 0600);
    ASSERT_EQ(::chmod(m_directory.Path().c_str(), 0755), 0);
    EXPECT_EXIT(
        {
            BecomeSomeUser();
            const std::string message = MessageOf<EZETError>([&] { CZETHost host(ConfigFile()); });
            std::_Exit(message.find("cannot be read: Permission denied (") != std::string::npos ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(ParameterFile, EmptyPathIsABadArgument) {
    EXPECT_EQ(MessageOf<EZETCheckError>([] { CZETHost host(""); }), "Argument is empty for 'CZETHost'.");
}

TEST_F(ParameterFile, LinkToTheFileIsFollowed) {
    WriteText(m_directory / "real", "A=linked\n");
    ASSERT_EQ(::symlink("real", ConfigFile().c_str()), 0);
    CZETHost host(ConfigFile());
    EXPECT_EQ(host.GetCore().GetParam("A"), "linked");
}

TEST_F(ParameterFile, LargeFileIsReadWhole) {
    std::string text;
    for (int i = 0; i < 20000; i++)
        text += "KEY_" + std::to_string(i) + "=" + std::to_string(i) + "\n";
    Start(text);
    EXPECT_EQ(Core().GetParam("KEY_0"), "0");
    EXPECT_EQ(Core().GetParam("KEY_19999"), "19999");
}

}  // namespace
}  // namespace ZET::Test
