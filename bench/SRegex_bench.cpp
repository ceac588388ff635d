// Patterns against their baselines on the same data: a compiled SRegex
// against raw regexec, a text pattern against a compiled one, and the
// white-space split against a hand-written splitter.  Pairs are named
// Lib/... and Std/... (or Text/... and Compiled/...) so that the ratio reads
// off the report directly.

#include "SRegex.h"

#include <benchmark/benchmark.h>
#include <regex.h>

#include <random>
#include <string>
#include <vector>

namespace {

const int MiB = 1 << 20;

const char MailPattern[] = "<([a-z.]+)@([a-z]+)\\.(org|net)>";
const char MailPerl[] = "<([a-z.]+)@(\\w+)\\.(org|net)>";

std::string HeaderLine() {
    return "Received: from relay.example.com by mx.example.net with ESMTP "
           "id 4F2A9C; for <first.last@example.org>; Mon, 23 Nov 2026 01:02:03 +0000";
}

// Words of 8 to 24 letters separated by runs of blanks, tabs and newlines:
// fewer fields than the list limit of 100,000.
std::string WhiteSpaceText() {
    std::mt19937 rng(11);
    const char blanks[] = " \t\n";
    std::string text;
    text.reserve(MiB + 32);
    while (text.size() < static_cast<size_t>(MiB)) {
        text.append(8 + rng() % 17, static_cast<char>('a' + rng() % 26));
        text.append(1 + rng() % 3, blanks[rng() % 3]);
    }
    text.resize(MiB);
    return text;
}

void LibMatch(benchmark::State& state) {
    SRegex re{SString(MailPattern)};
    SString line(HeaderLine().c_str());
    for (auto _ : state) {
        SStringList m = re.Match(line, 0);
        benchmark::DoNotOptimize(m);
    }
}
BENCHMARK(LibMatch);

void StdMatch(benchmark::State& state) {
    regex_t re;
    regcomp(&re, MailPattern, REG_EXTENDED);
    std::string line = HeaderLine();
    regmatch_t m[10];
    for (auto _ : state) {
        m[0].rm_so = 0;
        m[0].rm_eo = static_cast<regoff_t>(line.size());
        int rc = regexec(&re, line.data(), 10, m, REG_STARTEND);
        benchmark::DoNotOptimize(rc);
        benchmark::DoNotOptimize(m);
    }
    regfree(&re);
}
BENCHMARK(StdMatch);

void TextM(benchmark::State& state) {
    SString line(HeaderLine().c_str());
    SString pattern(MailPerl);
    for (auto _ : state) {
        SStringList m = line.M(pattern);
        benchmark::DoNotOptimize(m);
    }
}
BENCHMARK(TextM);

void CompiledM(benchmark::State& state) {
    SString line(HeaderLine().c_str());
    SPerlRegex re{SString(MailPerl)};
    for (auto _ : state) {
        SStringList m = line.M(re);
        benchmark::DoNotOptimize(m);
    }
}
BENCHMARK(CompiledM);

void LibSplitSpace(benchmark::State& state) {
    std::string text = WhiteSpaceText();
    SString s(text.data(), static_cast<int>(text.size()));
    for (auto _ : state) {
        SStringList fields = s.Split(' ');
        benchmark::DoNotOptimize(fields);
    }
    state.SetBytesProcessed(state.iterations() * MiB);
}
BENCHMARK(LibSplitSpace)->Unit(benchmark::kMillisecond);

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

void StdSplitSpace(benchmark::State& state) {
    std::string text = WhiteSpaceText();
    for (auto _ : state) {
        std::vector<std::string> fields;
        size_t i = 0;
        while (i < text.size()) {
            while (i < text.size() && IsSpace(text[i]))
                i++;
            size_t start = i;
            while (i < text.size() && !IsSpace(text[i]))
                i++;
            if (i > start)
                fields.emplace_back(text, start, i - start);
        }
        benchmark::DoNotOptimize(fields);
    }
    state.SetBytesProcessed(state.iterations() * MiB);
}
BENCHMARK(StdSplitSpace)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
