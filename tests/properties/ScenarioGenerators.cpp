#include "ScenarioGenerators.h"

#include <tuple>

#include "OperationGenerators.h"
#include "TextGenerators.h"

namespace ZET {

namespace {

namespace gen = rc::gen;
using rc::Gen;

Gen<mode_t> AnyMode() {
    return gen::weightedElement<mode_t>(
        {{4, 0644}, {1, 0600}, {1, 0640}, {1, 0400}, {1, 0777}, {1, 04755}, {1, 02750}, {1, 01666}});
}

// Unlike a range, whose upper end is only reached late in a run.
Gen<bool> OneIn(std::size_t many) {
    return gen::weightedElement<bool>({{many - 1, false}, {1, true}});
}

Place RegularFile(const std::string& bytes, mode_t mode, bool isForeign = false) {
    return {Place::Kind::Regular, bytes, mode, isForeign};
}

Gen<Place> AnyPlace() {
    using Kind = Place::Kind;
    const auto kind = gen::element(Kind::Missing, Kind::Regular, Kind::Directory, Kind::Fifo, Kind::Link,
                                   Kind::DanglingLink, Kind::SecondName);
    return gen::map(gen::tuple(kind, AnyText(), AnyMode(), OneIn(3)), [](const auto& parts) {
        return Place{std::get<0>(parts), std::get<1>(parts), std::get<2>(parts), std::get<3>(parts)};
    });
}

Gen<Place> MaybeRegular() {
    return gen::map(gen::tuple(gen::arbitrary<bool>(), AnyMode(), OneIn(3)), [](const auto& parts) {
        const auto& [isThere, mode, isForeign] = parts;
        return isThere ? RegularFile("before\n", mode, isForeign) : Place{};
    });
}

Gen<Place> RarelyOdd() {
    return gen::weightedOneOf<Place>({{4, gen::just(Place{})}, {1, AnyPlace()}});
}

Gen<Fault> AnyFault() {
    const auto call =
        gen::element<std::string>("MatchRegEx", "Put", "GetParam", "IsFileExist", "RenameFile", "CreateFile");
    const auto kind = gen::weightedElement<Fault::Kind>({{3, Fault::Kind::None},
                                                         {3, Fault::Kind::Call},
                                                         {1, Fault::Kind::NoFormat},
                                                         {1, Fault::Kind::FileSize}});
    return gen::map(gen::tuple(kind, call, gen::inRange<std::size_t>(1, 12)), [](const auto& parts) {
        const auto& [chosen, name, number] = parts;
        return Fault{chosen, name, chosen == Fault::Kind::FileSize ? number * 10 : number};
    });
}

Gen<std::string> AnyRole() {
    return gen::element<std::string>("server", "client", "Server", "", "server ");
}

}  // namespace

Gen<Scenario> OrdinaryScenario() {
    static const auto kOperations = OperationsOf(AnyOperation());
    static const auto kText = gen::weightedOneOf<std::string>({{3, AnyText()}, {1, MarkerText()}});
    return gen::exec([] {
        Scenario scenario;
        scenario.opening = *gen::element(Scenario::Opening::InPlace, Scenario::Opening::Template);
        scenario.role = *AnyRole();
        scenario.noMarkers = *gen::arbitrary<bool>();
        scenario.source = RegularFile(*kText, *AnyMode(), *OneIn(3));
        if (scenario.opening == Scenario::Opening::Template) scenario.target = *MaybeRegular();
        scenario.values = *AnyValues();
        scenario.operations = *kOperations;
        return scenario;
    });
}

Gen<Scenario> MarkerScenario() {
    static const auto kOperations = OperationsOf(MarkerOperation());
    return gen::exec([] {
        Scenario scenario;
        scenario.opening = *gen::element(Scenario::Opening::InPlace, Scenario::Opening::Template);
        scenario.noMarkers = *gen::arbitrary<bool>();
        scenario.source = RegularFile(*MarkerText(), 0644);
        scenario.operations = *kOperations;
        return scenario;
    });
}

Gen<Scenario> ExpansionScenario() {
    return gen::exec([] {
        Scenario scenario;
        scenario.noMarkers = true;
        scenario.source = RegularFile(*PlaceholderScraps(18), 0644);
        scenario.values = *AnyValues();
        scenario.operations = {{Operation::Kind::ApplyTemplates, "", "", false},
                               {Operation::Kind::Save, "", "", true}};
        return scenario;
    });
}

Gen<Scenario> TroubledScenario() {
    return gen::exec([] {
        using Opening = Scenario::Opening;
        Scenario scenario = *OrdinaryScenario();
        scenario.opening = *gen::weightedElement<Opening>(
            {{1, Opening::Never}, {8, Opening::InPlace}, {8, Opening::Template}});
        scenario.fileNameIsEmpty = *OneIn(20);
        scenario.templateNameIsEmpty = *OneIn(20);
        scenario.targetDirectoryIsMissing = *OneIn(20);
        scenario.configDirectorySuffix =
            *gen::weightedElement<std::string>({{6, ""}, {1, "/"}, {1, "//"}, {1, "/nowhere"}});
        if (*OneIn(4)) scenario.source = *AnyPlace();
        scenario.target = *AnyPlace();
        scenario.temporary = *RarelyOdd();
        scenario.reserve = *RarelyOdd();
        scenario.absence = *RarelyOdd();
        // To empty a FIFO, as the core does with such a record, blocks.
        if (scenario.absence.kind == Place::Kind::Fifo) scenario.absence.kind = Place::Kind::Missing;
        scenario.mask = *gen::element<mode_t>(022, 0, 077);
        scenario.headerIsTranslated = *OneIn(8);
        scenario.translatedHeader =
            *gen::element<std::string>("", "# ein Kopf\n# --ZET_CONFIG_COMMENT--", "\n", "%s%n");
        scenario.fault = *AnyFault();
        return scenario;
    });
}

}  // namespace ZET
