// Each pass with four sizes of text, in bytes per second.

#include "BenchHost.h"
#include "BenchPass.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

constexpr std::size_t kBytesPerBlock = 300;
const std::string kMissing = "^\\s*not_there=";
const std::string kNewLine = "parameter_00000000=changed";

std::size_t SizeOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

std::string TextWithBlocks(const benchmark::State& state) {
    return ParameterText(SizeOf(state), SizeOf(state) / kBytesPerBlock);
}

void ApplyTemplates(benchmark::State& state) {
    const StringMap values = TemplateValues();
    RunPass(state, TemplateText(SizeOf(state)),
            [&](TextReader& in, TextBuilder& out) { ApplyTemplatesPass(in, out, values); });
}

void RemoveMarkers(benchmark::State& state) {
    RunPass(state, TextWithBlocks(state), [](TextReader& in, TextBuilder& out) {
        RemoveMarkersPass(in, out, ZETBeginMarker, ZETEndMarker);
    });
}

/// The usual case: there is nothing to remove.
void RemoveMissingMarkers(benchmark::State& state) {
    RunPass(state, TextWithBlocks(state), [](TextReader& in, TextBuilder& out) {
        RemoveMarkersPass(in, out, ZETTemplateCommentMarker, ZETCommentEndMarker);
    });
}

void InsertHeader(benchmark::State& state) {
    RunPass(state, TextWithBlocks(state),
            [](TextReader& in, TextBuilder& out) { InsertHeaderPass(in, out, "# written by a program"); });
}

void SetLine(benchmark::State& state) {
    BenchHost host;
    const std::string pattern = "^#*\\s*parameter_00000001=";
    RunPass(state, TextWithBlocks(state), [&](TextReader& in, TextBuilder& out) {
        LineMatcher matches(host.Core(), pattern);
        SetLinePass(in, out, matches, kNewLine, LineStyle::Marked);
    });
}

void RestoreLine(benchmark::State& state) {
    BenchHost host;
    const std::string pattern = "^# --PRE-ZET-- #*\\s*parameter_00000001=";
    RunPass(state, TextWithBlocks(state), [&](TextReader& in, TextBuilder& out) {
        LineMatcher matches(host.Core(), pattern);
        RestoreLinePass(in, out, matches);
    });
}

void LookUpMissingLine(benchmark::State& state) {
    BenchHost host;
    RunPass(state, TextWithBlocks(state), [&](TextReader& in, TextBuilder& out) {
        LineMatcher matches(host.Core(), kMissing);
        std::string_view line;
        benchmark::DoNotOptimize(FindLine(in, matches, line));
        out.Copy(in.Bytes());
    });
}

void AtFourSizes(benchmark::internal::Benchmark* benchmark) {
    for (const int64_t size : {1 << 10, 32 << 10, 1 << 20, 32 << 20})
        benchmark->Arg(size);
}

BENCHMARK(ApplyTemplates)->Apply(AtFourSizes);
BENCHMARK(RemoveMarkers)->Apply(AtFourSizes);
BENCHMARK(RemoveMissingMarkers)->Apply(AtFourSizes);
BENCHMARK(InsertHeader)->Apply(AtFourSizes);
BENCHMARK(SetLine)->Apply(AtFourSizes);
BENCHMARK(RestoreLine)->Apply(AtFourSizes);
BENCHMARK(LookUpMissingLine)->Apply(AtFourSizes);

}  // namespace

}  // namespace ZET
