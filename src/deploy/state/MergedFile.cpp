#include "deploy/state/MergedFile.h"

#include <optional>
#include <set>

#include "deploy/host/Failure.h"
#include "deploy/host/Merge.h"
#include "deploy/host/Words.h"
#include "text/LineEnds.h"
#include "text/NoticeOfText.h"

namespace ZET::Deploy {

namespace {

void RequireOneLineEnd(const TextsToMerge& texts, const FileToMerge& file) {
    std::optional<bool> areCarriageReturns;
    for (const std::string* const text : {&texts.now, &texts.base, &texts.wanted}) {
        const Text::LineEnds ends = Text::LineEndsOf(*text);
        const bool isOther = areCarriageReturns && *areCarriageReturns != ends.areCarriageReturns;
        if (ends.otherLine != 0 || (isOther && !text->empty()))
            throw Failure({.file = file.path,
                           .text = _("its lines do not all end alike, so it cannot be merged"),
                           .remedy = Words("let them end alike; %s", file.otherWay)});
        if (!text->empty()) areCarriageReturns = ends.areCarriageReturns;
    }
}

template <typename T>
T Chosen(const T& now, const T& base, const T& wanted) {
    return now == base ? wanted : now;
}

std::optional<std::string> AttributeOf(const RecordedState& state, const std::string& name) {
    const auto found = state.attributes.find(name);
    return found == state.attributes.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

MergedFile MergeFile(const TextsToMerge& texts, const FileToMerge& file) {
    RequireOneLineEnd(texts, file);
    const Text::TextAndNotice now = Text::WithoutNotice(texts.now);
    const Text::TextAndNotice wanted = Text::WithoutNotice(texts.wanted);
    const Merged merged = Merge(std::string(now.text), std::string(Text::WithoutNotice(texts.base).text),
                                std::string(wanted.text), file.path, file.otherWay);
    MergedFile made;
    for (const std::size_t line : merged.conflicts) {
        made.conflicts.push_back({.file = file.path,
                                  .line = static_cast<int>(line + now.noticeLines),
                                  .text = _("was edited here, where other lines are to come, too"),
                                  .remedy = Words("take the edit out; %s", file.otherWay)});
    }
    if (made.conflicts.empty()) made.text = std::string(wanted.notice) + merged.text;
    return made;
}

RecordedState MergedAttributes(const RecordedState& now, const RecordedState& base,
                               const RecordedState& wanted) {
    RecordedState merged = wanted;
    merged.mode = Chosen(now.mode, base.mode, wanted.mode);
    merged.owner = Chosen(now.owner, base.owner, wanted.owner);
    merged.group = Chosen(now.group, base.group, wanted.group);
    merged.attributes.clear();
    std::set<std::string> names;
    for (const RecordedState* const state : {&now, &wanted})
        for (const auto& [name, value] : state->attributes)
            names.insert(name);
    for (const std::string& name : names) {
        const auto value = Chosen(AttributeOf(now, name), AttributeOf(base, name), AttributeOf(wanted, name));
        if (value) merged.attributes.emplace(name, *value);
    }
    return merged;
}

}  // namespace ZET::Deploy
