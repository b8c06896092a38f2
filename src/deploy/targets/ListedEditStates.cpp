#include "deploy/targets/ListedEditStates.h"

#include <algorithm>
#include <set>

#include "text/ManagedText.h"
#include "zet/ZETFiles.h"

namespace ZET::Deploy {

std::string StateOfLine(const FileWithLines& file, const LineToSet& line,
                        const std::vector<LineInPlace>& places, IZETCore& core) {
    bool isOutside = false;
    std::vector<std::string> inBlocks;
    for (const LineInPlace& place : places) {
        if (!core.MatchRegEx(line.pattern, place.text, nullptr, 0)) continue;
        isOutside = isOutside || !place.isInBlock;
        if (place.isInBlock) inBlocks.push_back(place.text);
    }
    const auto are = [&](const std::string& text) {
        return std::all_of(inBlocks.begin(), inBlocks.end(),
                           [&](const std::string& each) { return each == text; });
    };
    const std::string selector = SelectorOf(line.edit);
    const char* const unset = file.isUntold ? kDiffers : kNotCommitted;
    if (inBlocks.empty()) return file.Remembers(selector) ? kMissing : unset;
    if (are(line.line)) return isOutside ? kEdited : kInSync;
    if (!file.Remembers(selector)) return file.isForgotten ? kEdited : unset;
    const bool isAsLeft =
        std::any_of(file.remembered.begin(), file.remembered.end(),
                    [&](const RememberedLine& each) { return each.selector == selector && are(each.line); });
    return isAsLeft ? kPending : kEdited;
}

bool IsTakenOver(const FileWithLines& file, const LineToSet& line, const std::vector<LineInPlace>& places,
                 IZETCore& core) {
    const std::string selector = SelectorOf(line.edit);
    if (!file.Remembers(selector)) return false;
    return std::any_of(places.begin(), places.end(), [&](const LineInPlace& place) {
        return !place.isInBlock && !file.HasSet(selector, place.text) &&
               core.MatchRegEx(line.pattern, place.text, nullptr, 0);
    });
}

namespace {

/// What the role has not committed is not committed for it, whatever the other role has set.
std::string StateForRole(Deployment& product, const FileWithLines& file, const LineToSet& line,
                         const std::vector<LineInPlace>& places) {
    if (!file.isUntold && !file.IsCommittedBy(product.Role(), SelectorOf(line.edit))) return kNotCommitted;
    return StateOfLine(file, line, places, product.Core());
}

}  // namespace

std::vector<ListedEditState> StatesOfEdits(Deployment& product, const ListedLines& lines) {
    std::vector<ListedEditState> states;
    const auto add = [&](const ListedEdit& edit, const std::string& path, const std::string& state) {
        states.push_back(
            {edit.name, path, edit.param.empty() ? edit.pattern : edit.param, state, edit.file, edit.line});
    };
    for (const FileWithLines& file : lines.files) {
        product.RequireGoOn();
        const std::vector<LineInPlace> places = LinesIn(Text::ManagedText(file.text));
        for (const LineToSet& line : file.lines)
            add(line.edit, file.path, StateForRole(product, file, line, places));
        const std::set<std::string> blocks = BlockLinesOf(file.text);
        for (const RememberedLine& line : FormerLinesOf(product, file)) {
            if (!file.trouble.empty())
                states.push_back({"", file.path, line.Chosen(), kUnknown, "", 0, {}, file.trouble});
            else if (blocks.contains(line.line))
                states.push_back({"", file.path, line.Chosen(), kPending, "", 0});
        }
    }
    for (const auto& [edit, why] : lines.unset) {
        const std::string path = product.HostPaths().FromInside(edit->path);
        const bool isThere = IsFileExist(path);
        add(*edit, path, isThere ? kUnknown : kMissing);
        if (isThere) states.back().trouble = why.Describe();
    }
    return states;
}

}  // namespace ZET::Deploy
