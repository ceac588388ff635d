// Throughput of the named-list text form: reading (operator>>) and writing
// (operator<<) a control file and a large header file, each next to a
// baseline that does the least a reader or writer of the same bytes must do:
// split them into a std::vector<std::string> of lines, or append those lines
// to a reserved std::string.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "SNamedLists.h"

namespace {

// Keys in runs, as the writer produces them, so both texts read and write
// back byte for byte.
std::string ControlText()
{
    static const char* const keys[] = {
        "Function:", "Control-Type:", "Priority:", "Message-Id:", "Mail-From:",
        "Rcpt-To:", "Orig-Rcpt:", "Notify:", "Size:", "Date:", "Peer-Address:",
        "Peer-Name:", "Helo:", "Auth:", "Body-Type:", "Envelope-Id:", "Retries:",
        "Next-Try:", "Status:", "Trace:"};
    std::mt19937 rng(7);
    std::string text;
    for (const char* key : keys) {
        const bool many = std::strcmp(key, "Rcpt-To:") == 0 || std::strcmp(key, "Status:") == 0;
        const int values = many ? 50 : 1 + static_cast<int>(rng() % 3);
        for (int v = 0; v < values; v++)
            text += std::string(key) + " <user" + std::to_string(rng() % 100000) + "@example.org>\n";
    }
    return text;
}

std::string HeaderText()
{
    static const char* const names[] = {
        "Received:", "DKIM-Signature:", "ARC-Seal:", "X-Spam-Status:", "X-Report:",
        "Authentication-Results:", "List-Unsubscribe:", "X-Forwarded-For:",
        "Comments:", "Resent-Received:"};
    std::mt19937 rng(11);
    std::string text;
    const int perName = 2000 / (sizeof names / sizeof names[0]);
    for (const char* name : names)
        for (int h = 0; h < perName; h++)
            text += std::string(name) + " from host" + std::to_string(rng() % 1000) +
                    ".example.org [192.0.2." + std::to_string(rng() % 256) +
                    "]\n\tby mx.example.net id " + std::to_string(rng()) + "; 23 Nov 2026\n";
    return text;
}

const std::string& Control()
{
    static const std::string text = ControlText();
    return text;
}

const std::string& Header()
{
    static const std::string text = HeaderText();
    return text;
}

std::vector<std::string> SplitLines(const std::string& text)
{
    std::vector<std::string> lines;
    const char* p = text.data();
    const char* end = p + text.size();
    while (p < end) {
        const char* nl = static_cast<const char*>(std::memchr(p, '\n', end - p));
        const char* stop = nl ? nl : end;
        lines.emplace_back(p, stop - p);
        p = nl ? nl + 1 : end;
    }
    return lines;
}

void Label(benchmark::State& state, const std::string& text)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * text.size());
    state.counters["KiB"] = text.size() / 1024.0;
}

void Read(benchmark::State& state, const std::string& (*input)())
{
    const SString text(input().data(), static_cast<int>(input().size()));
    SNamedStringList map;
    for (auto _ : state) {
        text >> map;
        benchmark::DoNotOptimize(map);
    }
    Label(state, input());
}

void ReadBaseline(benchmark::State& state, const std::string& (*input)())
{
    for (auto _ : state) {
        std::vector<std::string> lines = SplitLines(input());
        benchmark::DoNotOptimize(lines.data());
    }
    Label(state, input());
}

void Write(benchmark::State& state, const std::string& (*input)())
{
    SNamedStringList map;
    SString(input().data(), static_cast<int>(input().size())) >> map;
    for (auto _ : state) {
        SString out;
        out << map;
        benchmark::DoNotOptimize(out.Data());
    }
    Label(state, input());
}

void WriteBaseline(benchmark::State& state, const std::string& (*input)())
{
    const std::vector<std::string> lines = SplitLines(input());
    for (auto _ : state) {
        std::string out;
        out.reserve(input().size());
        for (const std::string& line : lines) {
            out += line;
            out += '\n';
        }
        benchmark::DoNotOptimize(out.data());
    }
    Label(state, input());
}

} // namespace

BENCHMARK_CAPTURE(Read, Control, Control);
BENCHMARK_CAPTURE(ReadBaseline, Control, Control);
BENCHMARK_CAPTURE(Write, Control, Control);
BENCHMARK_CAPTURE(WriteBaseline, Control, Control);
BENCHMARK_CAPTURE(Read, Header, Header);
BENCHMARK_CAPTURE(ReadBaseline, Header, Header);
BENCHMARK_CAPTURE(Write, Header, Header);
BENCHMARK_CAPTURE(WriteBaseline, Header, Header);
BENCHMARK_MAIN();
