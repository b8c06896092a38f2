#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "deploy/edit/LineEdits.h"
#include "deploy/edit/ParamEdits.h"
#include "deploy/edit/Reserves.h"
#include "deploy/host/Failure.h"
#include "deploy/targets/Commit.h"
#include "text/repair/MarkerDamage.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

constexpr int kCases = 2'000;        ///< unless the variable ZET_EDIT_CASES says another number
constexpr int kEditsPerCommit = 20;  ///< that take as long
const std::string kNotice =
    std::string(ZETNoticeMarker) + "\n" + ZETEditedNotice + "\n" + ZETCommentEndMarker;

using Lines = std::vector<std::string>;

/// Files as the system leaves them, and hands that damage their markers. What the administrator wrote has a
/// number in angle brackets that stands nowhere else.
class FileMaker {
  public:
    explicit FileMaker(unsigned seed) : m_random(seed) {}

    int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }

    std::string Name() { return std::string(1, static_cast<char>('a' + Below(4))); }

    std::string Section() { return Below(2) == 0 ? "s" : "t"; }

    Lines Make() {
        m_lines.clear();
        m_hasCarriageReturns = Below(4) == 0;
        if (Below(4) != 0) AddNotice();
        for (int part = 1 + Below(7); part > 0; --part)
            AddPart();
        return m_lines;
    }

    /// Changes marker lines as an editor or a hand might. Only one is moved: where a begin and an end were
    /// both moved around another line, they make a block as good as any.
    void Damage(Lines& lines, int count) {
        for (int i = 0; i < count; ++i)
            DamageOne(lines, i == 0);
    }

    /// The last line may lack its end.
    std::string TextOf(const Lines& lines) {
        std::string text;
        for (const std::string& line : lines)
            text += line + "\n";
        if (!text.empty() && Below(5) == 0) text.pop_back();
        return text;
    }

  private:
    void DamageOne(Lines& lines, bool mayMove) {
        std::vector<std::size_t> markers;
        for (std::size_t i = 0; i < lines.size(); ++i)
            if (Text::MarkerOf(lines[i]) != Text::Marker::None) markers.push_back(i);
        if (markers.empty()) return;
        const std::size_t at = markers[static_cast<std::size_t>(Below(static_cast<int>(markers.size())))];
        if (mayMove && Below(4) == 0) return Move(lines, at);
        DamageAt(lines, at);
    }

    std::string Mark() { return "<" + std::to_string(++m_marks) + ">"; }

    void Add(const std::string& line) { m_lines.push_back(line + (m_hasCarriageReturns ? "\r" : "")); }

    void AddNotice() {
        std::istringstream notice(kNotice);
        for (std::string line; std::getline(notice, line);)
            m_lines.push_back(line);
    }

    void AddPart() {
        if (Below(8) == 0) return Add("[" + Section() + "]");
        const int kind = Below(10);
        if (kind < 4) return AddOwn();
        if (kind == 4) return Add(ZETFormerLinePrefix + Name() + "=" + Mark());
        if (kind == 5) return m_lines.push_back("");
        const std::string name = Name();
        if (kind < 9) {
            Add(ZETFormerLinePrefix + std::string(Below(3) == 0 ? "#" : "") + name + "=" + Mark());
        } else {
            m_lines.emplace_back();
        }
        m_lines.emplace_back(ZETBeginMarker);
        Add(name + "=system");
        m_lines.emplace_back(ZETEndMarker);
    }

    void AddOwn() {
        static const char* const kForms[] = {"=", "=", "=", " = ", "# about ", "[", "# -- ", "--", "- "};
        const std::string form = kForms[Below(9)];
        const bool isParameter = form == "=" || form == " = ";
        Add((isParameter ? (Below(4) == 0 ? "#" : "") + Name() : "") + form + Mark());
    }

    void DamageAt(Lines& lines, std::size_t at) {
        const auto place = lines.begin() + static_cast<std::ptrdiff_t>(at);
        const std::string line = *place;
        static const char* const kIndents[] = {" ", "\t", "#", "//", "-"};
        static const char* const kTrails[] = {" ", "-", " ---", "\"", " \r"};
        switch (Below(7)) {
            case 0:
                lines.erase(place);
                break;
            case 1:
                lines.insert(place, line);
                break;
            case 2:
                *place = kIndents[Below(5)] + line;
                break;
            case 3:
                *place += "\r";
                break;
            case 4:
                Join(lines, at);
                break;
            case 5:
                *place += kTrails[Below(5)];
                break;
            default:
                *place += (Below(2) == 0 ? " " : "") + Name() + "=" + Mark();
        }
    }

    void Move(Lines& lines, std::size_t at) {
        const std::string line = lines[at];
        lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(at));
        const int size = static_cast<int>(lines.size());
        const int near = std::clamp(static_cast<int>(at) + Below(7) - 3, 0, size);
        lines.insert(lines.begin() + (Below(2) == 0 ? near : Below(size + 1)), line);
    }

    void Join(Lines& lines, std::size_t at) {
        if (Below(2) == 0 && at > 0) --at;
        if (at + 1 >= lines.size()) return;
        lines[at] += (Below(3) == 0 ? " " : "") + lines[at + 1];
        lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(at) + 1);
    }

    std::mt19937 m_random;
    Lines m_lines;
    int m_marks = 0;
    bool m_hasCarriageReturns = false;
};

std::set<std::string> MarksIn(const std::string& text) {
    std::set<std::string> marks;
    for (std::size_t begin = text.find('<'); begin != std::string::npos; begin = text.find('<', begin + 1))
        marks.insert(text.substr(begin, text.find('>', begin) + 1 - begin));
    return marks;
}

void Write(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A host with one file to edit, whose reserve is an old one that knows nothing of what stands there now.
class EditSafety : public testing::Test {
  protected:
    EditSafety() {
        // In memory, if the host can: so many files take long on a disk.
        const fs::path place = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : fs::temp_directory_path();
        std::string name = place / "zet-edit.XXXXXX";
        m_directory = mkdtemp(name.data());
        for (const char* directory : {"etc", "templates", "state"})
            fs::create_directory(m_directory / directory);
        Write(m_directory / "zet.conf", "ZET_SYNC=no\nZET_CFG_DIR=" + Below("etc") +
                                            "\nZET_CFG_TEMPL_DIR=" + Below("templates") +
                                            "\nZET_VAR_LIB_DIR=" + Below("state") + "\n");
        m_options.moduleFile = ZET_MODULE;
        m_file = Below("conf");
        Write(m_file + ZETReserveSuffix, "as it was once\n");
    }

    ~EditSafety() override { fs::remove_all(m_directory); }

    std::string Below(const std::string& name) const { return (m_directory / name).string(); }

    /// Makes one of the edits; what kept it from being made, or nothing.
    std::string Edit(Deployment& product, FileMaker& maker) {
        const std::string name = maker.Name();
        const std::string pattern = "^#*" + name + "=";
        EditOptions options;
        options.allBlocks = maker.Below(2) == 0;
        const int kind = maker.Below(6);
        const bool isOfParam = std::string(kNames[kind]).starts_with("param");
        if (isOfParam && maker.Below(3) == 0) options.section = maker.Below(4) == 0 ? "" : maker.Section();
        m_edit = kNames[kind] + (" " + name) + (options.section ? " in [" + *options.section + "]" : "");
        try {
            if (kind == 0) SetParam(product, m_file, name, "new", options);
            if (kind == 1) SetLine(product, m_file, pattern, name + "=new", options);
            if (kind == 2) RestoreParam(product, m_file, name, options);
            if (kind == 3) RestoreLine(product, m_file, pattern, options);
            if (kind == 4) StripFile(product, m_file, options);
            if (kind == 5) UnsetParam(product, m_file, name, options);
            return "";
        } catch (const Failure& failure) {
            return failure.what();
        } catch (const UsageError& error) {
            return error.what();
        }
    }

    /// The same of a commit, whose lists ask for one or two lines, or none any more.
    std::string Commit(FileMaker& maker) {
        m_edit = "a commit of";
        std::string list;
        for (int i = maker.Below(3); i > 0; --i) {
            const std::string name = maker.Name();
            const bool isParam = maker.Below(2) == 0;
            list += "[[edits]]\nfile = \"" + m_file + "\"\n" +
                    (isParam ? "param = \"" + name + "\"\nvalue = \"listed\"\n"
                             : "pattern = \"^#*" + name + "=\"\nline = \"" + name + "=listed\"\n");
            m_edit += (isParam ? " param " : " line ") + name;
        }
        Write(m_directory / "templates" / "targets.toml", list);
        Observer observer;
        Deployment product(Below("zet.conf"), m_options, observer);
        try {
            CommitPlan plan(product, {}, OnEdit::AsConfigured);
            std::string problems;
            for (const Problem& problem : plan.Problems())
                problems += problem.Describe() + "\n";
            if (!problems.empty()) return problems;
            Deploy::Commit(product, plan);
            return "";
        } catch (const Failure& failure) {
            return failure.what();
        }
    }

    /// What an edit, which returns what kept it from being made, leaves of made-up files.
    void Try(int cases, unsigned seed, const std::function<std::string(FileMaker& maker)>& edit);

    static constexpr const char* kNames[] = {"param set",    "line set",   "param restore",
                                             "line restore", "file strip", "param unset"};

    fs::path m_directory;
    Options m_options;
    std::string m_file;
    std::string m_edit;  ///< the last one, in words
};

bool IsOfMarkers(const std::string& refusal) {
    return refusal.find(" doctor ") != std::string::npos;
}

int Cases() {
    const char* const asked = std::getenv("ZET_EDIT_CASES");
    return asked != nullptr ? std::atoi(asked) : kCases;
}

void EditSafety::Try(int cases, unsigned seed, const std::function<std::string(FileMaker& maker)>& edit) {
    const Text::NoticeTexts noticeTexts;
    FileMaker maker(seed);
    int refused = 0;
    int changed = 0;
    for (int number = 0; number < cases; ++number) {
        Lines lines = maker.Make();
        const int damages = maker.Below(8) == 0 ? 0 : 1 + maker.Below(2);
        maker.Damage(lines, damages);
        const std::string before = maker.TextOf(lines);
        Write(m_file, before);
        const std::string refusal = edit(maker);
        const std::string after = Read(m_file);
        const std::string what = m_edit + " on\n" + before + "gave\n" + (refusal.empty() ? after : refusal);
        if (!refusal.empty()) {
            ASSERT_EQ(after, before) << what;
        }
        if (IsOfMarkers(refusal)) {
            ++refused;
            ASSERT_NE(damages, 0) << what;
            ASSERT_FALSE(Text::DiagnoseMarkers(before, noticeTexts, std::nullopt).damages.empty()) << what;
        }
        changed += after != before;
        const std::set<std::string> left = MarksIn(after);
        for (const std::string& mark : MarksIn(before))
            ASSERT_TRUE(left.contains(mark)) << mark << " is lost: " << what;
    }
    RecordProperty("refused", refused);
    RecordProperty("changed", changed);
    std::printf("%d files: %d refused, %d changed\n", cases, refused, changed);
    EXPECT_GT(refused, cases / 4);
    EXPECT_GT(changed, cases / 10);
}

TEST_F(EditSafety, NoLineOfTheAdministratorsIsLostWhateverBecameOfTheMarkers) {
    Observer observer;
    Deployment product(Below("zet.conf"), m_options, observer);
    Try(Cases(), 20, [&](FileMaker& maker) { return Edit(product, maker); });
}

TEST_F(EditSafety, NorByACommitOfListedEdits) {
    Try(Cases() / kEditsPerCommit, 21, [&](FileMaker& maker) { return Commit(maker); });
}

}  // namespace
}  // namespace ZET::Deploy
