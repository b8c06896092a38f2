#ifndef ZET_MODULE_TEST_H
#define ZET_MODULE_TEST_H

#include <gtest/gtest.h>
#include <sys/types.h>

#include <functional>
#include <iosfwd>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

#include "RecordingCore.h"
#include "ZETConfigFile.h"
#include "zet/ZETErrors.h"

namespace ZET {

// The lines of the file format, deliberately repeated here.
inline const std::string kBegin = "# ---ZET_BEGIN---\n";
inline const std::string kEnd = "# ----ZET_END----\n";
inline const std::string kFormer = "# --PRE-ZET-- ";
inline const std::string kNotice = "# --ZET_CONFIG_COMMENT--\n";
inline const std::string kCommentEnd = "# --ZET_COMMENT_END--\n";
inline const std::string kTemplateComment = "# --ZET_TEMPLATE_COMMENT--\n";

/// The whole notice of a file edited in place.
inline const std::string kPartialNotice =
    kNotice +
    "# This file is partially modified by zet(7).\n"
    "# Do not edit data between ZET_BEGIN and ZET_END labels manually\n"
    "# unless you know what you are doing.\n"
    "# These lines are updated automatically by zet-init(1) and zet-client(1).\n"
    "\n" +
    kCommentEnd;

/// The whole notice of a file made from a template.
std::string GeneratedNotice(const std::string& templatePath, const std::string& command);

/// A text before and after. The name is a sentence that states the expectation.
struct TextCase {
    std::string name;
    std::string before;
    std::string after;
};
void PrintTo(const TextCase& each, std::ostream* stream);
std::string NameOfTextCase(const testing::TestParamInfo<TextCase>& info);

/// A managed file without a notice, so that saving shows its exact text, also with markers.
class BareFile : public CZETConfigFile {
  public:
    using CZETConfigFile::CZETConfigFile;
    void InsertHeader(const std::string&) override {}
    std::string Header() override { return ""; }
};

/// A recording core and a temporary directory D that contains the directories of the parameters: D/cfg,
/// D/templ, D/var. Results show its path as "D".
class ModuleTest : public testing::Test {
  protected:
    ModuleTest();
    ~ModuleTest() override;
    void TearDown() override;

    /// Declares that a temporary file remains, of a failed save or of somebody else. In other tests none may
    /// remain.
    void LeavesTemporary() { m_leavesTemporary = true; }

    std::string Path(const std::string& name) const { return m_directory + "/" + name; }

    /// Writes a file with exactly this mode and returns its path.
    std::string Write(const std::string& name, const std::string& content, mode_t mode = 0644) const;
    std::string Read(const std::string& name) const;
    bool Exists(const std::string& name) const;
    mode_t Mode(const std::string& name) const;

    /// The names in D other than the three directories, sorted.
    std::vector<std::string> Names() const;

    /// The text of a file edited in place after `edit`, without a notice.
    std::string Edited(const std::string& text, const std::function<void(IZETConfigFile&)>& edit,
                       bool noMarkers = false);

    std::vector<std::string> Journal() const { return Shown(m_core.Journal()); }
    std::vector<std::string> Journal(const std::set<std::string>& calls) const {
        return Shown(m_core.Journal(calls));
    }
    std::vector<std::string> Log() const { return Shown(m_core.Log()); }

    /// Each formatted message as "domain source function count: text".
    std::vector<std::string> Messages() const;

    std::string Shown(const std::string& text) const;
    std::vector<std::string> Shown(std::vector<std::string> texts) const;

    /// Expects `act` to throw exactly `Error`, with this message (D shown) and no detail.
    template <typename Error>
    void ExpectError(const std::string& message, const std::function<void()>& act) const {
        try {
            act();
            ADD_FAILURE() << "nothing thrown instead of: " << message;
        } catch (const EZETError& error) {
            EXPECT_TRUE(typeid(error) == typeid(Error)) << typeid(error).name();
            EXPECT_EQ(Shown(error.GetMessage()), message);
            EXPECT_EQ(Shown(error.what()), message);
            EXPECT_EQ(error.GetDetail(), "");
        }
    }

    /// Expects `act` to throw the scripted failure of `call`.
    static void ExpectScriptedFailure(const std::string& call, const std::function<void()>& act);

    RecordingCore m_core;
    std::string m_directory;

  private:
    std::vector<std::string> Temporaries() const;

    bool m_leavesTemporary = false;
};

using Strings = std::vector<std::string>;

}  // namespace ZET

#endif
