#include "cli/Fields.h"

#include <cstring>

#include "deploy/host/FileState.h"

namespace ZET::Cli {

namespace {

using Result = FileOutcome::Result;

bool IsAboutReserveOnly(const FileOutcome& outcome) {
    return outcome.result == Result::Reserved || outcome.result == Result::Forgotten;
}

/// What happened to the file itself.
Value ResultOf(const FileOutcome& outcome) {
    return NameOf(IsAboutReserveOnly(outcome) ? Result::Unchanged : outcome.result);
}

/// What happened to its reserve, if that is all that happened.
Value ReserveResultOf(const FileOutcome& outcome) {
    if (!IsAboutReserveOnly(outcome)) return nullptr;
    return NameOf(outcome.result == Result::Reserved ? Result::Created : Result::Removed);
}

void AddAttributes(Fields& fields, const FileOutcome& outcome) {
    const bool isChange = outcome.IsChange() && !IsAboutReserveOnly(outcome);
    const auto text = [&](const FileState& state, std::string (*textOf)(const FileState&)) {
        return isChange && state.exists ? Value(textOf(state)) : Value(nullptr);
    };
    fields.emplace_back("mode_before", text(outcome.before, ModeText));
    fields.emplace_back("mode_after", text(outcome.after, ModeText));
    fields.emplace_back("owner_before", text(outcome.before, OwnerText));
    fields.emplace_back("owner_after", text(outcome.after, OwnerText));
}

}  // namespace

Value NumberOrNull(std::int64_t number) {
    return number == 0 ? Value(nullptr) : Value(number);
}

Value TextOrNull(const std::string& text) {
    return text.empty() ? Value(nullptr) : Value(text);
}

Fields FieldsOf(const Problem& problem) {
    return {{"file", TextOrNull(problem.file)},       {"line", NumberOrNull(problem.line)},
            {"column", NumberOrNull(problem.column)}, {"problem", problem.text},
            {"remedy", TextOrNull(problem.remedy)},   {"output", TextOrNull(problem.output)}};
}

Fields FieldsOf(const Failure& failure) {
    Fields fields = FieldsOf(failure.Facts());
    const char* const error = failure.ErrorNumber() == 0 ? nullptr : strerrorname_np(failure.ErrorNumber());
    fields.emplace_back("errno", error == nullptr ? Value(nullptr) : Value(error));
    return fields;
}

Fields FieldsOf(const FileOutcome& outcome, const std::string& path, bool isSecret, const Value& edited) {
    Fields fields = {{"template", TextOrNull(outcome.templateName)},
                     {"file", outcome.file},
                     {"path", path},
                     {"result", ResultOf(outcome)},
                     {"reserve", TextOrNull(outcome.reserve)},
                     {"reserve_result", ReserveResultOf(outcome)},
                     {"edited", edited},
                     {"merged", outcome.isMerged},
                     {"secret", isSecret}};
    AddAttributes(fields, outcome);
    AddDiff(fields, outcome.diff);
    return fields;
}

void AddDiff(Fields& fields, const ShownDiff& diff) {
    const bool isHidden = !diff.excuse.empty();
    const std::vector<std::string>& places = diff.places;
    fields.emplace_back("diff", isHidden ? Value(nullptr) : TextOrNull(diff.text));
    fields.emplace_back("changed_lines",
                        isHidden ? Value(List(places.begin(), places.end())) : Value(nullptr));
}

}  // namespace ZET::Cli
