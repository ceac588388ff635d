// The spool against the system calls beneath it, measured in one run.
// Lib/ControlWriteRead writes and rereads a 20-key control file through
// SControl; Sys/WriteRead writes the same bytes with open, write and rename
// and reads them back with read, the floor set by the file system.
// Lib/Notify sends the dispatcher notice; Sys/Sendto sends the same bytes
// with sendto on one open socket.
#include "SMessage.h"

#include <benchmark/benchmark.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

// A spool root under /tmp with a control directory, removed at exit.
struct BenchRoot {
    BenchRoot()
    {
        char pattern[] = "/tmp/spool-bench-XXXXXX";
        path = mkdtemp(pattern);
        std::filesystem::create_directory(path + "/control");
        setenv("Tarnwick", path.c_str(), 1);
        setenv("ModuleName", "bench", 1);
    }
    ~BenchRoot() { std::filesystem::remove_all(path); }
    std::string path;
};

const BenchRoot& Root()
{
    static BenchRoot root;
    return root;
}

void Fill(SControl& control)
{
    for (int k = 0; k < 20; k++)
        control[SString("Key-") + SString(k) + ":"].Push("value of a typical control field");
}

void LibControlWriteRead(benchmark::State& state)
{
    Root();
    SControl writer, reader;
    Fill(writer);
    writer.PutFilename("bench");
    for (auto _ : state) {
        writer.Delete("Trace:");  // keep the file the same size
        writer.Write();
        benchmark::DoNotOptimize(reader.Read("bench"));
    }
}
BENCHMARK(LibControlWriteRead);

void SysWriteRead(benchmark::State& state)
{
    SControl control;
    Fill(control);
    control["Trace:"].Push("bench");
    SString text("");
    text << control;
    std::string path = Root().path + "/control/sys-Control", temp = path + ".temp";
    char buf[4096];
    for (auto _ : state) {
        int fd = open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0660);
        benchmark::DoNotOptimize(write(fd, text.Data(), text.Length()));
        close(fd);
        rename(temp.c_str(), path.c_str());
        fd = open(path.c_str(), O_RDONLY);
        benchmark::DoNotOptimize(read(fd, buf, sizeof buf));
        close(fd);
    }
}
BENCHMARK(SysWriteRead);

// A socket on 127.0.0.1 that the notices go to; nobody reads it, so the
// system drops what does not fit, the same for both benchmarks.
struct Sink {
    Sink() : fd(socket(AF_INET, SOCK_DGRAM, 0))
    {
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = inet_addr("127.0.0.1");
        socklen_t len = sizeof addr;
        bind(fd, reinterpret_cast<sockaddr*>(&addr), len);
        getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len);
        setenv("DispatchSocket", std::to_string(ntohs(addr.sin_port)).c_str(), 1);
    }
    ~Sink() { close(fd); }
    int fd;
    sockaddr_in addr = sockaddr_in();
};

void LibNotify(benchmark::State& state)
{
    Root();
    Sink sink;
    SControl control;
    control["Function:"].Push("Deliver");
    control["Control-Type:"].Push("Message");
    control["Priority:"].Push("2");
    control.PutFilename("20261123010203.4711");
    for (auto _ : state)
        benchmark::DoNotOptimize(control.Notify());
}
BENCHMARK(LibNotify);

void SysSendto(benchmark::State& state)
{
    Sink sink;
    const std::string notice = "20261123010203.4711\nDeliver\nMessage\n2";
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(sendto(fd, notice.data(), notice.size(), 0,
                                        reinterpret_cast<sockaddr*>(&sink.addr), sizeof sink.addr));
    close(fd);
}
BENCHMARK(SysSendto);

}  // namespace

BENCHMARK_MAIN();
