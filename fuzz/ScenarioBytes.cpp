#include "ScenarioBytes.h"

#include <algorithm>
#include <array>
#include <string>

namespace ZET {

namespace {

constexpr std::uint8_t kTextEnd = 255;

class Reader {
  public:
    Reader(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    std::uint8_t Byte() { return m_next == m_end ? std::uint8_t{0} : *m_next++; }

    std::string Text() {
        const std::uint8_t* stop = std::find(m_next, m_end, kTextEnd);
        std::string text(m_next, stop);
        m_next = stop == m_end ? m_end : stop + 1;
        return text;
    }

    std::string Rest() { return {m_next, m_end}; }

  private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

int TextsOf(Operation::Kind kind) {
    using Kind = Operation::Kind;
    switch (kind) {
        case Kind::RemoveMarkers:
        case Kind::SetParamValue:
        case Kind::SetLine:
            return 2;
        case Kind::GetParamValue:
        case Kind::RestoreParamValue:
        case Kind::GetLine:
        case Kind::RestoreLine:
        case Kind::InsertHeader:
            return 1;
        case Kind::ApplyTemplates:
        case Kind::RemoveZETMarkers:
        case Kind::Save:
            return 0;
    }
    return 0;
}

Operation OperationFrom(Reader& reader) {
    constexpr int kKinds = static_cast<int>(Operation::Kind::Save) + 1;
    const int byte = reader.Byte();
    Operation operation;
    operation.kind = static_cast<Operation::Kind>(byte % 16 % kKinds);
    operation.noBackup = byte >= 128;
    const int texts = TextsOf(operation.kind);
    if (texts > 0) operation.first = reader.Text();
    if (texts > 1) operation.second = reader.Text();
    return operation;
}

Fault FaultFrom(int byte) {
    static constexpr std::array kCalls = {"MatchRegEx", "Put", "IsFileExist", "RenameFile"};
    const auto count = static_cast<std::size_t>(byte / 16 + 1);
    if (byte % 16 >= 12) return {Fault::Kind::Call, kCalls.at(static_cast<std::size_t>(byte % 4)), count};
    if (byte % 16 == 11) return {Fault::Kind::NoFormat, "", 0};
    if (byte % 16 == 10) return {Fault::Kind::FileSize, "", count * 8};
    return {};
}

}  // namespace

Scenario ScenarioFromBytes(const std::uint8_t* data, std::size_t size) {
    Reader reader(data, size);
    const int opening = reader.Byte();
    const int fault = reader.Byte();
    const int counts = reader.Byte();
    Scenario scenario;
    scenario.opening = (opening & 1) != 0 ? Scenario::Opening::Template : Scenario::Opening::InPlace;
    scenario.noMarkers = (opening & 2) != 0;
    scenario.role = (opening & 4) != 0 ? "server" : "client";
    if ((opening & 1) != 0 && (opening & 8) != 0) scenario.target = {Place::Kind::Regular, "former\n", 0600};
    scenario.fault = FaultFrom(fault);
    for (int count = counts % 8; count > 0; --count)
        scenario.operations.push_back(OperationFrom(reader));
    scenario.operations.push_back({Operation::Kind::Save, "", "", (opening & 16) != 0});
    for (int count = counts / 8 % 4; count > 0; --count) {
        const std::string key = reader.Text();
        scenario.values[key] = reader.Text();
    }
    scenario.source = {Place::Kind::Regular, reader.Rest(), 0640};
    return scenario;
}

}  // namespace ZET
