// How the cost grows with each quantity of a text. Each fit should be linear: N, with a small RMS.

#include "BenchHost.h"
#include "BenchPass.h"
#include "zet/ZETFormat.h"

namespace ZET {

namespace {

constexpr std::size_t kLargest = 4096;

std::size_t CountOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

/// As `RunPass`, with the benchmark's argument as the N of its growth.
template <typename Pass>
void RunGrowth(benchmark::State& state, const std::string& content, Pass pass) {
    RunPass(state, content, pass);
    state.SetComplexityN(state.range(0));
}

void RenderBySize(benchmark::State& state) {
    const StringMap values = TemplateValues();
    RunGrowth(state, TemplateText(CountOf(state)),
              [&](TextReader& in, TextBuilder& out) { ApplyTemplatesPass(in, out, values); });
}

void RenderByPlaceholdersOfOneLine(benchmark::State& state) {
    const StringMap values = TemplateValues();
    RunGrowth(state, PlaceholderLine(CountOf(state)),
              [&](TextReader& in, TextBuilder& out) { ApplyTemplatesPass(in, out, values); });
}

std::string ChainPlaceholder(std::size_t index) {
    return std::string("${").append(std::to_string(index)).append("}");
}

/// Each value contains the next placeholder. The number of values stays the same, and so does the cost of
/// finding one.
void RenderByDepthOfValues(benchmark::State& state) {
    StringMap values;
    for (std::size_t index = 0; index < kLargest; ++index)
        values[ChainPlaceholder(index)] = ChainPlaceholder(index + 1).append("end");
    values[ChainPlaceholder(kLargest)] = "end";
    RunGrowth(state, ChainPlaceholder(kLargest - CountOf(state)) + "\n",
              [&](TextReader& in, TextBuilder& out) { ApplyTemplatesPass(in, out, values); });
}

void SetLineByLines(benchmark::State& state) {
    BenchHost host;
    const std::string pattern = "^#*\\s*parameter_00000001=";
    RunGrowth(state, ParameterLines(CountOf(state)), [&](TextReader& in, TextBuilder& out) {
        LineMatcher matches(host.Core(), pattern);
        SetLinePass(in, out, matches, "parameter_00000001=changed", LineStyle::Marked);
    });
}

void SetEveryLineByLines(benchmark::State& state) {
    BenchHost host;
    const std::string pattern = "^parameter_";
    RunGrowth(state, ParameterLines(CountOf(state)), [&](TextReader& in, TextBuilder& out) {
        LineMatcher matches(host.Core(), pattern);
        SetLinePass(in, out, matches, "changed", LineStyle::Marked);
    });
}

void RemoveMarkersByBlocks(benchmark::State& state) {
    RunGrowth(state, ParameterText(0, CountOf(state)), [](TextReader& in, TextBuilder& out) {
        RemoveMarkersPass(in, out, ZETBeginMarker, ZETEndMarker);
    });
}

void RestoreLineByBlocks(benchmark::State& state) {
    BenchHost host;
    const std::string pattern = "^# --PRE-ZET-- parameter_";
    RunGrowth(state, ParameterText(0, CountOf(state)), [&](TextReader& in, TextBuilder& out) {
        LineMatcher matches(host.Core(), pattern);
        RestoreLinePass(in, out, matches);
    });
}

/// Matches lines through the core: one run takes the time of N lines.
void MatchByLines(benchmark::State& state) {
    BenchHost host;
    RunGrowth(state, ParameterLines(CountOf(state)), [&](TextReader& in, TextBuilder& out) {
        const std::string pattern = "^\\s*not_there=";
        LineMatcher matches(host.Core(), pattern);
        std::string_view line;
        benchmark::DoNotOptimize(FindLine(in, matches, line));
        out.Copy(in.Bytes());
    });
    state.counters["per_line"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// Stays within the processor's caches: beyond them, memory rather than the algorithm would bend the line.
void Growing(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(4)->Range(16, kLargest)->Complexity(benchmark::oN);
}

BENCHMARK(RenderBySize)->RangeMultiplier(4)->Range(1 << 10, 1 << 18)->Complexity(benchmark::oN);
BENCHMARK(RenderByPlaceholdersOfOneLine)->Apply(Growing);
BENCHMARK(RenderByDepthOfValues)->Apply(Growing);
BENCHMARK(SetLineByLines)->Apply(Growing);
BENCHMARK(SetEveryLineByLines)->Apply(Growing);
BENCHMARK(RemoveMarkersByBlocks)->Apply(Growing);
BENCHMARK(RestoreLineByBlocks)->Apply(Growing);
BENCHMARK(MatchByLines)->Apply(Growing);

}  // namespace

}  // namespace ZET
