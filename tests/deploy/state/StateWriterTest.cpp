#include "deploy/state/StateWriter.h"

#include <gmock/gmock.h>
#include <sys/xattr.h>

#include "../HostFixture.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileMode.h"
#include "deploy/state/HostProduct.h"
#include "deploy/state/store/Digest.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSuffixes[] = {"", ZETReserveSuffix, ZETAbsenceSuffix};

/// What stands there, by the letters of the tests: "-" nothing, "o" the original, "n" a new text; an empty
/// record of absence is "e".
struct Shape {
    char file;
    char reserve;
    char absence;
};

/// Every sound one, and some that only hands make.
constexpr Shape kShapes[] = {{'-', '-', '-'}, {'o', '-', '-'}, {'n', '-', '-'}, {'o', 'o', '-'},
                             {'n', 'o', '-'}, {'-', 'o', '-'}, {'-', '-', 'e'}, {'n', '-', 'e'},
                             {'o', '-', 'e'}, {'n', 'o', 'e'}, {'-', 'o', 'e'}};

class StateWriterTest : public HostFixture {
  protected:
    StateWriterTest() {
        m_options.moduleFile = ZET_MODULE;
        m_product = std::make_unique<HostProduct>(At("zet.conf"), m_options, m_told);
    }

    static std::string TextOf(char kind) {
        return kind == 'o' ? "original\n" : kind == 'n' ? "new text\n" : "";
    }

    static mode_t ModeOf(char kind) { return kind == 'o' ? 04755 : kind == 'n' ? 0600 : 0644; }

    static CapturedFile Wanted(char kind) {
        CapturedFile file;
        file.state.exists = kind != '-';
        if (!file.state.exists) return file;
        file.text = TextOf(kind);
        file.state.mode = ModeOf(kind);
        file.state.owner = kind == 'o' && geteuid() == 0 ? 12345 : geteuid();
        file.state.group = file.state.owner == geteuid() ? getegid() : 54321;
        file.state.attributes = {{"user.kind", std::string(1, kind)}};
        file.state.size = file.text.size();
        file.state.digest = DigestOf(file.text);
        return file;
    }

    static FileWithCompanions Wanted(const Shape& shape) {
        return {Wanted(shape.file), Wanted(shape.reserve), Wanted(shape.absence)};
    }

    void Put(const std::string& path, char kind) const {
        fs::remove(path);
        if (kind == '-') return;
        const CapturedFile file = Wanted(kind);
        std::ofstream(path, std::ios::binary) << file.text;
        ASSERT_EQ(setxattr(path.c_str(), "user.kind", &kind, 1, 0), 0);
        ASSERT_EQ(chown(path.c_str(), file.state.owner, file.state.group), 0);
        ASSERT_EQ(chmod(path.c_str(), file.state.mode), 0);
    }

    void Furnish(const Shape& shape) const {
        const char kinds[] = {shape.file, shape.reserve, shape.absence};
        for (std::size_t i = 0; i < 3; ++i)
            Put(Path() + kSuffixes[i], kinds[i]);
    }

    std::string Path() const { return At("out/a"); }

    FileWithCompanions Now() const {
        return {Capture(Path(), 1000), Capture(Path() + ZETReserveSuffix, 1000),
                Capture(Path() + ZETAbsenceSuffix, 1000)};
    }

    void Bring(const FileWithCompanions& wanted, const FileVersion& version) {
        const FileInPlace place(m_product->HostPaths().FindReal(Path()), Path());
        StateWriter(*m_product, place, version).Bring(Now(), wanted);
    }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(At("out")))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    std::unique_ptr<HostProduct> m_product;
};

std::string NameOf(const Shape& shape) {
    return {shape.file, shape.reserve, shape.absence};
}

TEST_F(StateWriterTest, EveryStateComesOutOfEveryOther) {
    for (const Shape& from : kShapes) {
        for (const Shape& to : kShapes) {
            Furnish(from);
            const FileWithCompanions wanted = Wanted(to);
            Bring(wanted, VersionOf(Path()));
            const FileWithCompanions now = Now();
            const std::string step = NameOf(from) + " to " + NameOf(to);
            EXPECT_TRUE(now.file->IsAs(wanted.file->state)) << step;
            EXPECT_TRUE(now.reserve->IsAs(wanted.reserve->state)) << step;
            EXPECT_TRUE(now.absence->IsAs(wanted.absence->state)) << step;
            EXPECT_THAT(Names(), testing::Each(testing::Not(testing::HasSubstr(".tmp")))) << step;
        }
    }
}

TEST_F(StateWriterTest, WhatIsNotWantedOtherwiseStays) {
    Furnish({'n', 'o', '-'});
    FileWithCompanions wanted;
    wanted.file = Wanted('o');
    Bring(wanted, VersionOf(Path()));
    EXPECT_TRUE(Now().file->IsAs(wanted.file->state));
    EXPECT_TRUE(Now().reserve->IsAs(Wanted('o').state));
}

TEST_F(StateWriterTest, TheReserveItselfComesBackWhereItIsTheWantedText) {
    Furnish({'n', 'o', '-'});
    const FileVersion reserve = VersionOf(Path() + ZETReserveSuffix);
    Bring(Wanted({'o', '-', '-'}), VersionOf(Path()));
    EXPECT_EQ(VersionOf(Path()).inode, reserve.inode);
}

TEST_F(StateWriterTest, WhatAnotherProgramWroteSinceIsNotOverwritten) {
    for (const Shape& to : kShapes) {
        Furnish({'n', 'o', '-'});
        const FileVersion version = VersionOf(Path());
        Write("out/a", "somebody's");
        EXPECT_THROW(Bring(Wanted(to), version), Failure) << NameOf(to);
        EXPECT_EQ(Read("out/a"), "somebody's");
        EXPECT_THAT(Names(), testing::ElementsAre("a", "a.before_zet")) << NameOf(to);
    }
}

TEST_F(StateWriterTest, ANameThatSomebodyTookMeanwhileIsNotWritten) {
    Furnish({'o', '-', '-'});
    Write("out/a.tmp", "somebody's");
    EXPECT_THROW(Bring(Wanted({'n', '-', '-'}), VersionOf(Path())), Failure);
    EXPECT_EQ(Read("out/a.tmp"), "somebody's");
    EXPECT_TRUE(Now().file->IsAs(Wanted('o').state));
}

TEST_F(StateWriterTest, AnAttributeThatIsNotWantedGoes) {
    Furnish({'n', '-', '-'});
    ASSERT_EQ(setxattr(Path().c_str(), "user.more", "x", 1, 0), 0);
    Bring(Wanted({'o', '-', '-'}), VersionOf(Path()));
    EXPECT_TRUE(Now().file->IsAs(Wanted('o').state));
}

TEST(ReserveOfFileTest, OneWithOtherAttributesIsMadeOfTheFileOnlyWhereItsTextIsNotHeld) {
    CapturedFile file;
    file.state.exists = true;
    file.state.mode = 0644;
    file.SetText("text");
    FileWithCompanions now;
    now.file = file;
    FileWithCompanions wanted;
    wanted.reserve = file;
    EXPECT_TRUE(IsReserveMadeOfFile(now, wanted));
    wanted.reserve->state.mode = 0640;
    EXPECT_FALSE(IsReserveMadeOfFile(now, wanted));
    wanted.reserve->text.clear();
    EXPECT_TRUE(IsReserveMadeOfFile(now, wanted));
}

}  // namespace
}  // namespace ZET::Deploy
