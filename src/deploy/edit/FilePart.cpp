#include "deploy/edit/FilePart.h"

#include <algorithm>
#include <vector>

#include "deploy/edit/Edits.h"
#include "deploy/host/Failure.h"
#include "deploy/host/FileBytes.h"
#include "deploy/host/FileMode.h"
#include "deploy/host/StagedFile.h"
#include "deploy/host/Staging.h"
#include "deploy/host/Words.h"
#include "deploy/state/Overrides.h"
#include "deploy/state/OwnText.h"
#include "text/Sections.h"
#include "zet/ZETFormat.h"

namespace ZET::Deploy {

namespace {

constexpr std::size_t kMostNames = 10;  ///< in one message

std::string InBrackets(std::string_view name) {
    return "[" + std::string(name) + "]";
}

/// The sections that the caller could name instead.
std::string OtherSections(const std::vector<Text::Section>& sections) {
    std::string names;
    const std::size_t count = std::min(sections.size(), kMostNames + 1);
    for (std::size_t i = 1; i < count; ++i)
        names += (names.empty() ? "" : ", ") + InBrackets(sections[i].name);
    if (names.empty()) return _("the file has no sections: leave --section out");
    return sections.size() > count
               ? Words("the file has %s, ...; a new one is a line that you write into the file yourself",
                       names)
               : Words("the file has %s; a new one is a line that you write into the file yourself", names);
}

[[noreturn]] void FailInBlock(const std::string& path, const Text::Section& section) {
    throw Failure({.file = path,
                   .line = static_cast<int>(section.headingLine),
                   .text = Words("the line %s stands in a managed block, which a restore takes out",
                                 InBrackets(section.name)),
                   .remedy = _("write the line into the file yourself")});
}

[[noreturn]] void FailTwice(const std::string& path, const Text::Section& one, const Text::Section& other) {
    throw Failure({.file = path,
                   .line = static_cast<int>(other.headingLine),
                   .text = Words("a second section %s begins here, after the one in line %s",
                                 InBrackets(other.name), std::to_string(one.headingLine)),
                   .remedy = _("join the two, or edit the line by hand")});
}

const Text::Section& SectionCalled(const std::string& path, const std::vector<Text::Section>& sections,
                                   const std::string& name) {
    const Text::Section* found = nullptr;
    for (const Text::Section& section : sections) {
        if (section.headingLine == 0 || section.name != name) continue;
        if (section.isInBlock) FailInBlock(path, section);
        if (found != nullptr) FailTwice(path, *found, section);
        found = &section;
    }
    if (found != nullptr) return *found;
    throw Failure({.file = path,
                   .text = Words("has no section %s", InBrackets(name)),
                   .remedy = OtherSections(sections)});
}

/// Has the module edit the text in a private file, as it would any other file.
std::string MadeOf(Deployment& product, const std::string& text, bool noMarkers,
                   const std::function<void(IZETConfigFile& file)>& edit) {
    const Staging staging;
    const std::string path = staging.PathOf("part");
    WriteStagedFile(path, text, 0600);
    EditFile(product, path, noMarkers, edit);
    return ReadFileBytes(path);
}

}  // namespace

FilePart PartOf(const std::string& path, std::string_view text, const std::optional<std::string>& section) {
    if (!section) return {text, 0};
    const std::vector<Text::Section> sections = Text::SectionsOf(text);
    const Text::Section& found =
        section->empty() ? sections.front() : SectionCalled(path, sections, *section);
    return {found.lines, found.linesBefore};
}

std::string TextWithPart(Deployment& product, const std::string& text, const FilePart& part, bool noMarkers,
                         const std::function<void(IZETConfigFile& file)>& edit) {
    const ParamOverride noSync(product.Core(), "ZET_SYNC", "no");
    const QuietLog quiet(ZETLogWarning);
    const LoggedFailures failures;
    const auto begin = static_cast<std::size_t>(part.lines.data() - text.data());
    // The module puts no notice before a text that begins with this line.
    const std::string noticeLine = std::string(ZETNoticeMarker) + "\n";
    std::string made = MadeOf(product, noticeLine + std::string(part.lines), noMarkers, edit);
    if (!made.starts_with(noticeLine))
        throw Failure({.text = _("the edit would change what the system wrote to keep order in the file"),
                       .remedy = _("nothing was changed; choose the lines more closely")});
    made = text.substr(0, begin) + made.substr(noticeLine.size()) + text.substr(begin + part.lines.size());
    if (!noMarkers) made = MadeOf(product, made, noMarkers, [](IZETConfigFile&) {});
    if (failures.Any())
        throw Failure({.text = _("the edit failed, as the log says"), .remedy = _("nothing was changed")});
    return made;
}

std::function<void(const std::string& path)> EditOfPart(
    Deployment& product, const EditOptions& options, const std::string& path, const std::string& text,
    const FilePart& part, const std::function<void(IZETConfigFile& file)>& edit) {
    if (!options.section)
        return [&product, noMarkers = options.noMarkers, edit](const std::string& file) {
            EditFile(product, file, noMarkers, edit);
        };
    return [made = TextWithPart(product, text, part, options.noMarkers, edit),
            mode = ModeOf(path)](const std::string& file) { SaveOwnText(file, made, mode); };
}

}  // namespace ZET::Deploy
