// The string and list core against the standard library on the same data.
// Each pair is named Lib/... and Std/... so that the ratio reads off the
// report directly.

#include "SString.h"
#include "SStringList.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

const int MiB = 1 << 20;

std::string Haystack()
{
    std::string text(MiB, 'a');
    for (size_t i = 0; i < text.size(); i += 61)
        text[i] = 'b';
    text.replace(text.size() - 100, 12, "needle-found");
    return text;
}

std::vector<std::string> RandomWords(int n, int length)
{
    std::mt19937 rng(7);
    std::vector<std::string> words(n, std::string(length, ' '));
    for (auto& w : words)
        for (auto& c : w)
            c = static_cast<char>('a' + rng() % 26);
    return words;
}

void LibCopy(benchmark::State& state)
{
    SString s('x', static_cast<int>(state.range(0)));
    for (auto _ : state) {
        SString copy(s);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(LibCopy)->Arg(10)->Arg(MiB);

void StdCopy(benchmark::State& state)
{
    std::string s(state.range(0), 'x');
    for (auto _ : state) {
        std::string copy(s);
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(StdCopy)->Arg(10)->Arg(MiB);

void LibIndex(benchmark::State& state)
{
    std::string text = Haystack();
    SString s(text.data(), static_cast<int>(text.size()));
    SString needle("needle-found");
    for (auto _ : state)
        benchmark::DoNotOptimize(s.Index(needle));
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(LibIndex);

void StdMemmem(benchmark::State& state)
{
    std::string text = Haystack();
    for (auto _ : state)
        benchmark::DoNotOptimize(memmem(text.data(), text.size(), "needle-found", 12));
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(StdMemmem);

void LibCount(benchmark::State& state)
{
    std::string text = Haystack();
    SString s(text.data(), static_cast<int>(text.size()));
    SString needle("ab");
    for (auto _ : state)
        benchmark::DoNotOptimize(s.Count(needle));
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(LibCount);

void StdMemmemCount(benchmark::State& state)
{
    std::string text = Haystack();
    for (auto _ : state) {
        int count = 0;
        const char* end = text.data() + text.size();
        for (const char* p = text.data(); (p = static_cast<const char*>(memmem(p, end - p, "ab", 2))); p++)
            count++;
        benchmark::DoNotOptimize(count);
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(StdMemmemCount);

void LibSort(benchmark::State& state)
{
    SStringList words;
    for (auto& w : RandomWords(100000, 16))
        words.Push(w.c_str());
    for (auto _ : state) {
        SStringList l(words);
        l.Sort();
        benchmark::DoNotOptimize(l);
    }
}
BENCHMARK(LibSort)->Unit(benchmark::kMillisecond);

void StdSort(benchmark::State& state)
{
    std::vector<std::string> words = RandomWords(100000, 16);
    for (auto _ : state) {
        std::vector<std::string> v(words);
        std::sort(v.begin(), v.end());
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(StdSort)->Unit(benchmark::kMillisecond);

void LibJoin(benchmark::State& state)
{
    SStringList words;
    for (auto& w : RandomWords(100000, 16))
        words.Push(w.c_str());
    SString comma(",");
    for (auto _ : state)
        benchmark::DoNotOptimize(words.Join(comma));
}
BENCHMARK(LibJoin)->Unit(benchmark::kMillisecond);

void StdJoin(benchmark::State& state)
{
    std::vector<std::string> words = RandomWords(100000, 16);
    for (auto _ : state) {
        std::string joined;
        joined.reserve(words.size() * 17);
        for (size_t i = 0; i < words.size(); i++) {
            if (i > 0)
                joined += ',';
            joined += words[i];
        }
        benchmark::DoNotOptimize(joined);
    }
}
BENCHMARK(StdJoin)->Unit(benchmark::kMillisecond);

void LibAppendByte(benchmark::State& state)
{
    for (auto _ : state) {
        SString s;
        for (int i = 0; i < MiB; i++)
            s += 'x';
        benchmark::DoNotOptimize(s);
    }
}
BENCHMARK(LibAppendByte)->Unit(benchmark::kMillisecond);

void StdPushBack(benchmark::State& state)
{
    for (auto _ : state) {
        std::string s;
        for (int i = 0; i < MiB; i++)
            s.push_back('x');
        benchmark::DoNotOptimize(s);
    }
}
BENCHMARK(StdPushBack)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
