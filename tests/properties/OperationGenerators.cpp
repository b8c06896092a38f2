#include "OperationGenerators.h"

#include <tuple>

#include "TextGenerators.h"

namespace ZET {

namespace {

namespace gen = rc::gen;
using rc::Gen;

Gen<std::string> AnyPattern() {
    return OneOfWords({"^\\s*kdc=",
                       "kdc",
                       "^kdc=old$",
                       "nothing like it",
                       "^#*\\s*kdc=",
                       "",
                       ".",
                       "^",
                       "$",
                       "^$",
                       "(",
                       "[",
                       "^#",
                       "a|b",
                       "^a|^#",
                       "=",
                       "\\x00",
                       "\\r$",
                       "^# ---ZET_BEGIN---",
                       "^# ----ZET_END----",
                       "PRE-ZET",
                       "old",
                       "^b=",
                       "ZET_COMMENT"});
}

Gen<std::string> AnyName() {
    return OneOfWords({"kdc", "b", "a.c", "nobody", "", "(", "a|kdc"});
}

Gen<std::string> AnyMarker() {
    return gen::oneOf(OneOfWords(Markers()), OneOfWords({"a", "", "#", "# -", "kdc", "# --ZET_CO", " "}));
}

Operation MakeOperation(Operation::Kind kind, const std::string& first = "", const std::string& second = "",
                        bool noBackup = false) {
    return {kind, first, second, noBackup};
}

Gen<Operation> WithTexts(Operation::Kind kind, const Gen<std::string>& first,
                         const Gen<std::string>& second) {
    return gen::map(gen::tuple(first, second), [kind](const auto& texts) {
        return MakeOperation(kind, std::get<0>(texts), std::get<1>(texts));
    });
}

Gen<Operation> WithText(Operation::Kind kind, const Gen<std::string>& first) {
    return WithTexts(kind, first, gen::just(std::string()));
}

Gen<Operation> SaveOperation() {
    return gen::map(gen::arbitrary<bool>(),
                    [](bool noBackup) { return MakeOperation(Operation::Kind::Save, "", "", noBackup); });
}

}  // namespace

Gen<Operation> AnyOperation() {
    using Kind = Operation::Kind;
    static const auto kOperation =
        gen::weightedOneOf<Operation>({{4, WithText(Kind::ApplyTemplates, gen::just(std::string()))},
                                       {2, WithTexts(Kind::RemoveMarkers, AnyMarker(), AnyMarker())},
                                       {1, WithText(Kind::RemoveZETMarkers, gen::just(std::string()))},
                                       {3, WithTexts(Kind::SetParamValue, AnyName(), AnyNewText())},
                                       {2, WithText(Kind::GetParamValue, AnyName())},
                                       {2, WithText(Kind::RestoreParamValue, AnyName())},
                                       {3, WithTexts(Kind::SetLine, AnyPattern(), AnyNewText())},
                                       {2, WithText(Kind::GetLine, AnyPattern())},
                                       {2, WithText(Kind::RestoreLine, AnyPattern())},
                                       {1, WithText(Kind::InsertHeader, AnyNewText())},
                                       {2, SaveOperation()}});
    return kOperation;
}

Gen<Operation> MarkerOperation() {
    using Kind = Operation::Kind;
    static const auto kOperation =
        gen::weightedOneOf<Operation>({{3, WithTexts(Kind::RemoveMarkers, AnyMarker(), AnyMarker())},
                                       {1, WithText(Kind::RemoveZETMarkers, gen::just(std::string()))},
                                       {2, WithTexts(Kind::SetLine, AnyPattern(), AnyNewText())},
                                       {2, WithText(Kind::RestoreLine, AnyPattern())},
                                       {1, SaveOperation()}});
    return kOperation;
}

Gen<std::vector<Operation>> OperationsOf(const Gen<Operation>& operation) {
    return gen::map(gen::tuple(UpTo(7, operation), SaveOperation()), [](const auto& parts) {
        auto operations = std::get<0>(parts);
        operations.push_back(std::get<1>(parts));
        return operations;
    });
}

}  // namespace ZET
