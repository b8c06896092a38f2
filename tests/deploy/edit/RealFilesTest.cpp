#include <gmock/gmock.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "../HostFixture.h"
#include "deploy/edit/ParamEdits.h"
#include "deploy/host/Failure.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLeastFiles = 200;
constexpr std::size_t kMostFiles = 1'000;
constexpr std::uintmax_t kLargestFile = 64 * 1024;
constexpr char kValue[] = "a value = of [this] test #1";

std::string BytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// A parameter of a file as a plain reader finds it.
struct Setting {
    std::string name;
    std::string value;
    std::optional<std::string> section;  ///< none: the file has none
};

/// A file, and the parameters that are set in it exactly once.
struct Sample {
    fs::path path;
    std::string text;
    std::vector<Setting> settings;
};

bool IsBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

/// The name in "  name=value"; empty: the line is another one.
std::string NameIn(const std::string& line) {
    std::size_t begin = 0;
    while (begin < line.size() && IsBlank(line[begin]))
        ++begin;
    std::size_t end = begin;
    while (end < line.size() && (std::isalnum(static_cast<unsigned char>(line[end])) || line[end] == '_'))
        ++end;
    return end > begin && end < line.size() && line[end] == '=' ? line.substr(begin, end - begin) : "";
}

/// Files of which a reader as plain as this one cannot tell the sections are of no use.
bool IsPlain(const std::string& text, const std::set<std::string>& headings) {
    const std::vector<std::string> lines = LinesOf(text);
    std::size_t count = 0;
    for (const std::string& line : lines) {
        const std::size_t first = line.find_first_not_of(" \t");
        if (first == std::string::npos || line[first] != '[') continue;
        if (!headings.contains(line)) return false;
        ++count;
    }
    const bool mustComeFirst = text.starts_with("#!") || text.starts_with("<?") || text.starts_with("{");
    return count == headings.size() && !mustComeFirst && text.find("# --") == std::string::npos &&
           text.find('\0') == std::string::npos;
}

/// Whether the line has the name in any form in front of a "=".
bool Mentions(const std::string& line, const std::string& name) {
    const std::size_t begin = line.find_first_not_of("#; \t");
    if (begin == std::string::npos || line.compare(begin, name.size(), name) != 0) return false;
    const std::size_t sign = line.find_first_not_of(" \t", begin + name.size());
    return sign != std::string::npos && line[sign] == '=';
}

Sample SampleOf(const fs::path& path) {
    static const std::regex heading("\\[([^\\]\\[]*[^\\]\\[ ])\\]");
    Sample sample{path, BytesOf(path), {}};
    std::set<std::string> headings;
    std::optional<std::string> section;
    std::vector<Setting> settings;
    std::map<std::string, std::vector<std::string>> mentions;  // by section
    const std::vector<std::string> lines = LinesOf(sample.text);
    for (const std::string& line : lines) {
        std::smatch match;
        if (std::regex_match(line, match, heading)) {
            section = match[1].str();
            if (!headings.insert(line).second) return sample;
            continue;
        }
        mentions[section.value_or("")].push_back(line);
        if (const std::string name = NameIn(line); !name.empty())
            settings.push_back({name, line.substr(line.find('=') + 1), section});
    }
    if (!IsPlain(sample.text, headings)) return sample;
    for (Setting& setting : settings) {
        const std::vector<std::string>& others = mentions[setting.section.value_or("")];
        const auto count = std::count_if(others.begin(), others.end(), [&](const std::string& line) {
            return Mentions(line, setting.name);
        });
        if (count != 1) continue;
        if (!setting.section && !headings.empty()) setting.section = "";
        sample.settings.push_back(setting);
    }
    return sample;
}

/// Below these stand the files of packages.
std::vector<fs::path> Places() {
    std::vector<fs::path> places = {"/etc", "/usr/lib/systemd", "/usr/share/pkgconfig"};
    std::error_code ignored;
    for (const auto& package : fs::directory_iterator("/usr/share/doc", ignored))
        places.push_back(package.path() / "examples");
    for (const auto& directory : fs::directory_iterator("/usr/lib", ignored))
        places.push_back(directory.path() / "pkgconfig");
    return places;
}

bool IsSmallFile(const fs::directory_entry& entry) {
    std::error_code failed;
    if (!entry.is_regular_file(failed) || entry.is_symlink(failed)) return false;
    const std::uintmax_t size = entry.file_size(failed);
    return !failed && size > 0 && size <= kLargestFile && access(entry.path().c_str(), R_OK) == 0;
}

std::vector<Sample> Samples() {
    std::vector<Sample> samples;
    for (const fs::path& place : Places()) {
        std::error_code failed;
        fs::recursive_directory_iterator entry(place, fs::directory_options::skip_permission_denied, failed);
        for (; !failed && entry != fs::recursive_directory_iterator(); entry.increment(failed)) {
            if (samples.size() == kMostFiles) return samples;
            if (!IsSmallFile(*entry)) continue;
            Sample sample = SampleOf(entry->path());
            if (!sample.settings.empty()) samples.push_back(std::move(sample));
        }
    }
    return samples;
}

/// The text that stays when the edits are taken back: the notice stands before the first line that is not
/// empty.
std::string WithNotice(const std::string& text) {
    return std::string(ZETNoticeMarker) + "\n" + ZETEditedNotice + "\n" + ZETCommentEndMarker + "\n" +
           text.substr(text.find_first_not_of('\n'));
}

class RealFilesTest : public HostFixture {
  protected:
    RealFilesTest() {
        m_options.moduleFile = ZET_MODULE;
        // In memory, if the host can: so many writes take long on a disk.
        const fs::path place = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : fs::temp_directory_path();
        std::string name = place / "zet-real.XXXXXX";
        m_place = mkdtemp(name.data());
        m_file = m_place / "conf";
        fs::create_directory(m_place / "state");
        HostFixture::Write("zet.conf", "ZET_SYNC=no\nZET_HISTORY=no\n" + Directories() +
                                           "ZET_VAR_LIB_DIR=" + (m_place / "state").string() + "\n");
    }

    ~RealFilesTest() override { fs::remove_all(m_place); }

    void Write(const std::string& text) const { std::ofstream(m_file, std::ios::binary) << text; }

    static std::string Without(const std::string& value) {
        return value.ends_with('\r') ? value.substr(0, value.size() - 1) : value;
    }

    void EditAndTakeBack(Deployment& product, const Sample& sample, const Setting& setting) {
        EditOptions options;
        options.section = setting.section;
        options.force = true;  // some lines go on in the next one
        const auto get = [&] { return GetParam(product, m_file, setting.name, setting.section); };
        Write(sample.text);
        ASSERT_EQ(get(), Without(setting.value));
        SetParam(product, m_file, setting.name, kValue, options);
        ASSERT_EQ(get(), kValue);
        SetParam(product, m_file, setting.name, "another", options);
        ASSERT_EQ(get(), "another");
        RestoreParam(product, m_file, setting.name, options);
        ASSERT_EQ(BytesOf(m_file), WithNotice(sample.text));
        UnsetParam(product, m_file, setting.name, options);
        ASSERT_EQ(get(), std::nullopt);
        RestoreParam(product, m_file, setting.name, options);
        ASSERT_EQ(BytesOf(m_file), WithNotice(sample.text));
    }

    void EditWithoutMarkers(Deployment& product, const Sample& sample, const Setting& setting) {
        EditOptions options;
        options.section = setting.section;
        options.force = true;  // some lines go on in the next one
        options.noMarkers = true;
        Write(sample.text);
        SetParam(product, m_file, setting.name, kValue, options);
        SetParam(product, m_file, setting.name, Without(setting.value), options);
        // What stands before the name stays in a comment at most.
        const std::vector<std::string> before = LinesOf(sample.text);
        const std::vector<std::string> after = LinesOf(BytesOf(m_file));
        ASSERT_EQ(before.size(), after.size());
        for (std::size_t i = 0; i < before.size(); ++i) {
            if (before[i] != after[i]) {
                ASSERT_EQ(before[i].substr(before[i].find_first_not_of(" \t")), after[i]);
            }
        }
    }

  private:
    fs::path m_place;
    std::string m_file;
};

TEST_F(RealFilesTest, WhatIsSetIsFoundAndWhatIsRestoredIsAsItWas) {
    const std::vector<Sample> samples = Samples();
    Deployment product(At("zet.conf"), m_options, m_told);
    std::size_t inSections = 0;
    for (const Sample& sample : samples) {
        SCOPED_TRACE(sample.path.string());
        const Setting& setting = sample.settings[sample.text.size() % sample.settings.size()];
        SCOPED_TRACE(setting.section.value_or("no section") + ": " + setting.name);
        inSections += setting.section ? 1 : 0;
        ASSERT_NO_THROW(EditAndTakeBack(product, sample, setting));
        ASSERT_NO_THROW(EditWithoutMarkers(product, sample, setting));
        if (HasFatalFailure()) return;
    }
    std::printf("%zu files, %zu with sections\n", samples.size(), inSections);
    EXPECT_GE(samples.size(), kLeastFiles) << "install more packages: script/setup test";
    EXPECT_GE(inSections, kLeastFiles / 4);
}

}  // namespace
}  // namespace ZET::Deploy
