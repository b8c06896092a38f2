#include "cli/Fields.h"

namespace ZET {

namespace {

Value TextOrNull(const FileState& state, std::string (*text)(const FileState&)) {
    return state.exists ? Value(text(state)) : Value(nullptr);
}

}  // namespace

Fields FieldsOf(const Problem& problem) {
    Fields fields = {{"file", problem.file},
                     {"line", problem.line},
                     {"column", problem.column},
                     {"problem", problem.text},
                     {"remedy", problem.remedy}};
    if (!problem.output.empty()) fields.emplace_back("output", problem.output);
    return fields;
}

Fields ChangeFields(const FileState& before, const FileState& after) {
    return {{"mode_before", TextOrNull(before, ModeText)},
            {"mode_after", TextOrNull(after, ModeText)},
            {"owner_before", TextOrNull(before, OwnerText)},
            {"owner_after", TextOrNull(after, OwnerText)}};
}

}  // namespace ZET
