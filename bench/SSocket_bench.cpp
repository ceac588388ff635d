// The line socket against plain recv/send on the same stream through a
// socketpair, with the peer in another thread.  Each pair is named Lib/...
// and Sys/... so that the ratio reads off the report directly; times are wall
// clock, since the work is split between two threads.

#include "SSocket.h"
#include "Snetwork.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <sys/select.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

const int Lines = 1000000;
const int Block = 4096;

// A 40-byte command line: "NOOP 0000042 ... \r\n".
std::string Line(int i)
{
    char text[64];
    snprintf(text, sizeof text, "NOOP %07d the quick brown fox jumps\r\n", i);
    return text;
}

const std::string& Stream()
{
    static const std::string stream = [] {
        std::string s;
        s.reserve(Lines * 40);
        for (int i = 0; i < Lines; i++)
            s += Line(i);
        return s;
    }();
    return stream;
}

// A socketpair whose far end is fed or drained by a thread.
struct Pair {
    int near, far;
    Pair()
    {
        int fds[2];
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds) != 0)
            fds[0] = fds[1] = -1;
        near = fds[0], far = fds[1];
    }
    ~Pair()
    {
        close(near);
        close(far);
    }
    std::thread Feed(const std::string& data)
    {
        return std::thread([this, &data] {
            for (size_t at = 0; at < data.size();) {
                ssize_t n = write(far, data.data() + at, std::min<size_t>(65536, data.size() - at));
                if (n <= 0)
                    break;
                at += n;
            }
            shutdown(far, SHUT_WR);
        });
    }
    std::thread Drain(long& bytes)
    {
        return std::thread([this, &bytes] {
            char buf[65536];
            for (ssize_t n; (n = read(far, buf, sizeof buf)) > 0;)
                bytes += n;
        });
    }
};

// One wait through the library's Select, as the socket makes before each
// receive and each send: select and the sigaction calls around it.  The
// baselines that make it show the floor of the socket's own numbers.
bool Wait(int fd, bool forWriting)
{
    fd_set ready;
    FD_ZERO(&ready);
    FD_SET(fd, &ready);
    struct timeval limit = {1800, 0};
    return Select(fd + 1, forWriting ? nullptr : &ready, forWriting ? &ready : nullptr, nullptr, &limit) > 0;
}

void LibReadLines(benchmark::State& state)
{
    const std::string& stream = Stream();
    long lines = 0;
    for (auto _ : state) {
        Pair pair;
        std::thread peer = pair.Feed(stream);
        SSocket sock(pair.near, pair.near);
        SString line;
        while (sock >> line)
            lines++;
        peer.join();
    }
    if (lines != Lines * state.iterations())
        state.SkipWithError("lines lost");
    state.SetItemsProcessed(lines);
}
BENCHMARK(LibReadLines)->Unit(benchmark::kMillisecond)->UseRealTime();

// The baseline reader; with waitFirst set it also waits before each recv, as
// every socket read must.
void SysReadLines(benchmark::State& state, bool waitFirst)
{
    const std::string& stream = Stream();
    long lines = 0;
    for (auto _ : state) {
        Pair pair;
        std::thread peer = pair.Feed(stream);
        char buf[Block];
        for (;;) {
            if (waitFirst && !Wait(pair.near, false))
                break;
            ssize_t n = recv(pair.near, buf, sizeof buf, 0);
            if (n <= 0)
                break;
            for (const char* p = buf; (p = static_cast<const char*>(memchr(p, '\n', buf + n - p))); p++)
                lines++;
        }
        peer.join();
    }
    if (lines != Lines * state.iterations())
        state.SkipWithError("lines lost");
    state.SetItemsProcessed(lines);
}
BENCHMARK_CAPTURE(SysReadLines, Plain, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(SysReadLines, WithSelect, true)->Unit(benchmark::kMillisecond)->UseRealTime();

void LibWriteLines(benchmark::State& state)
{
    std::vector<SString> lines;
    for (int i = 0; i < 1000; i++)
        lines.push_back(SString(Line(i).c_str()));
    long bytes = 0;
    for (auto _ : state) {
        Pair pair;
        std::thread peer = pair.Drain(bytes);
        SSocket sock(pair.near, pair.near);
        for (int i = 0; i < Lines; i++)
            sock << lines[i % 1000];
        sock.Flush();
        shutdown(pair.near, SHUT_WR);
        peer.join();
    }
    if (bytes != 40L * Lines * state.iterations())
        state.SkipWithError("bytes lost");
    state.SetBytesProcessed(bytes);
}
BENCHMARK(LibWriteLines)->Unit(benchmark::kMillisecond)->UseRealTime();

// The baseline writer; with waitFirst set it waits before each send.
void SysWriteLines(benchmark::State& state, bool waitFirst)
{
    const std::string& stream = Stream();
    long bytes = 0;
    for (auto _ : state) {
        Pair pair;
        std::thread peer = pair.Drain(bytes);
        for (size_t at = 0; at < stream.size();) {
            if (waitFirst && !Wait(pair.near, true))
                break;
            ssize_t n = send(pair.near, stream.data() + at, std::min<size_t>(Block, stream.size() - at), 0);
            if (n <= 0)
                break;
            at += n;
        }
        shutdown(pair.near, SHUT_WR);
        peer.join();
    }
    if (bytes != 40L * Lines * state.iterations())
        state.SkipWithError("bytes lost");
    state.SetBytesProcessed(bytes);
}
BENCHMARK_CAPTURE(SysWriteLines, Plain, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(SysWriteLines, WithSelect, true)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
