#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <regex>
#include <sstream>

#include "Support.h"

namespace ZET::Test {
namespace {

using testing::HasSubstr;

const std::string kSource = ZET_SOURCE_DIR;

std::vector<std::string> KnownNames() {
    std::vector<std::string> names;
    for (const ZETParameter& parameter : KnownParameters())
        names.push_back(parameter.name);
    return names;
}

/// The text of the manual without the signs that keep it from being taken for markup.
std::string ManualText() {
    std::string text = ReadText(kSource + "/man/zet.conf.5.scd");
    std::erase(text, '\\');
    return text;
}

/// What the manual says of a parameter, the lines joined; empty when it has no entry for it.
std::string EntryOf(const std::string& manual, const ZETParameter& parameter) {
    const std::string heading = "\n*" + parameter.name + "* (" + parameter.kindName + ")\n";
    const std::size_t start = manual.find(heading);
    if (start == std::string::npos) return "";
    const std::size_t text = start + heading.size();
    std::string entry = manual.substr(text, manual.find("\n\n", text) - text);
    std::replace(entry.begin(), entry.end(), '\n', ' ');
    std::erase(entry, '\t');
    return entry;
}

TEST(ParameterTable, NamesAreInOrder) {
    EXPECT_THAT(KnownNames(), testing::IsSupersetOf({"DOMAIN", "REALM", "ZET_CFG", "ZET_SYNC"}));
    EXPECT_THAT(KnownNames(), testing::WhenSorted(testing::ElementsAreArray(KnownNames())));
}

TEST(ParameterTable, EachIsFoundByItsNameAndNothingElseIs) {
    for (const ZETParameter& parameter : KnownParameters()) {
        const std::optional<ZETParameter> found = KnownParameter(parameter.name);
        ASSERT_TRUE(found) << parameter.name;
        EXPECT_EQ(found->name, parameter.name);
        EXPECT_EQ(found->text, parameter.text) << parameter.name;
        EXPECT_TRUE(IsKnownParameter(parameter.name)) << parameter.name;
    }
    for (const char* const name : {"", "domain", "DOMAI", "DOMAINS", "OWN"}) {
        EXPECT_FALSE(KnownParameter(name)) << name;
        EXPECT_FALSE(IsKnownParameter(name)) << name;
    }
}

TEST(ParameterTable, DefaultsAreThoseThatTheCoreHandsOut) {
    CZETHost host;
    for (const ZETParameter& parameter : KnownParameters())
        EXPECT_EQ(host.GetCore().GetParam(parameter.name), parameter.value) << parameter.name;
}

TEST(ParameterTable, ManualHasEachWithItsKindAndDefault) {
    const std::string manual = ManualText();
    for (const ZETParameter& parameter : KnownParameters()) {
        const std::string entry = EntryOf(manual, parameter);
        EXPECT_THAT(entry, HasSubstr(parameter.text)) << parameter.name;
        const std::string byDefault =
            parameter.source.empty() ? parameter.value + "." : "made of " + parameter.source;
        if (byDefault == ".") continue;
        EXPECT_THAT(entry, HasSubstr("Default: " + byDefault)) << parameter.name;
    }
}

TEST(ParameterTable, ManualHasNoOther) {
    const std::string manual = ManualText();
    const std::regex heading("\n\\*([A-Z_]+)\\* \\(");
    std::vector<std::string> names;
    for (std::sregex_iterator found(manual.begin(), manual.end(), heading), end; found != end; ++found)
        names.push_back((*found)[1]);
    EXPECT_THAT(names, testing::UnorderedElementsAreArray(KnownNames()));
}

/// The words behind a begin in a completion, up to the closing quote or bracket.
std::vector<std::string> WordsBehind(const std::string& text, const std::string& begin) {
    const std::size_t start = text.find(begin);
    if (start == std::string::npos) return {};
    const std::size_t words = start + begin.size();
    std::istringstream stream(text.substr(words, text.find_first_of("')", words) - words));
    return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}

class Completion : public testing::TestWithParam<std::pair<const char*, const char*>> {
  protected:
    const std::string m_text = ReadText(kSource + "/completions/zet-init." + GetParam().first);

    std::vector<std::string> List(const std::string& name) {
        return WordsBehind(m_text, name + GetParam().second);
    }
};

TEST_P(Completion, OffersEachParameterThatCanBeSet) {
    std::vector<std::string> settable = KnownNames();
    std::erase(settable, "ZET_CFG");
    EXPECT_THAT(List("parameters"), testing::ElementsAreArray(settable));
}

TEST_P(Completion, OffersTheWordsThatCanBeChosen) {
    const std::map<std::string, std::string> lists = {{"NETWORK_FS_TYPE", "file_systems"},
                                                      {"ZET_ON_EDIT", "edits"}};
    std::vector<std::string> flags;
    for (const ZETParameter& parameter : KnownParameters()) {
        if (parameter.kind == ZETParameterKind::YesNo) flags.push_back(parameter.name);
        if (parameter.kind == ZETParameterKind::OneOf) {
            EXPECT_THAT(List(lists.at(parameter.name)), testing::ElementsAreArray(parameter.words));
        }
    }
    EXPECT_THAT(List("flags"), testing::ElementsAreArray(flags));
}

INSTANTIATE_TEST_SUITE_P(Shells, Completion,
                         testing::Values(std::pair("bash", "='"), std::pair("zsh", "=("),
                                         std::pair("fish", " '")),
                         [](const auto& info) { return std::string(info.param.first); });

}  // namespace
}  // namespace ZET::Test
