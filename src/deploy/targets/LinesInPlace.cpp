#include "deploy/targets/LinesInPlace.h"

#include <algorithm>
#include <utility>

namespace ZET::Deploy {

std::vector<LineInPlace> LinesIn(const Text::ManagedText& managed) {
    std::vector<LineInPlace> lines;
    for (std::size_t number = 1; number <= managed.LineCount(); ++number) {
        const Text::ManagedLine& line = managed.Line(number);
        const Text::RegionKind kind = managed.RegionOf(number).kind;
        const bool isInBlock = kind == Text::RegionKind::Block && line.IsContent();
        if (isInBlock || kind == Text::RegionKind::Ordinary)
            lines.push_back({number, std::string(line.text), isInBlock});
    }
    return lines;
}

std::set<std::string> BlockLinesOf(std::string_view text) {
    std::set<std::string> lines;
    for (LineInPlace& line : LinesIn(Text::ManagedText(text)))
        if (line.isInBlock) lines.insert(std::move(line.text));
    return lines;
}

std::vector<RememberedLine> FormerLinesOf(Deployment& product, const FileWithLines& file) {
    const Role role = product.Role();
    std::set<std::string> wanted;
    for (const LineToSet& line : file.lines)
        wanted.insert(SelectorOf(line.edit));
    for (const RememberedLine& line : file.remembered)
        if (line.role != role) wanted.insert(line.selector);
    std::vector<RememberedLine> former;
    for (const RememberedLine& line : file.remembered)
        if (line.role == role && !wanted.contains(line.selector) &&
            (!file.trouble.empty() || EntryOf(product, file.path, line) == nullptr))
            former.push_back(line);
    return former;
}

const ListedEdit* EntryOf(Deployment& product, const std::string& path, const RememberedLine& line) {
    const std::string name = product.Lists().NameOf(path);
    const auto& edits = product.Lists().Targets().edits;
    const auto entry = std::find_if(edits.begin(), edits.end(), [&](const ListedEdit& edit) {
        return edit.IsInForceFor(line.role) && SelectorOf(edit) == line.selector &&
               product.HostPaths().Canonical(edit.path) == name;
    });
    return entry == edits.end() ? nullptr : &*entry;
}

}  // namespace ZET::Deploy
