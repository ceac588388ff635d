// Shared by the spool, error-report and file tests: a private root, a UDP
// receiver on 127.0.0.1, child processes, and file helpers.
#ifndef TARNWICK_TESTS_SPOOL_FIXTURE_H
#define TARNWICK_TESTS_SPOOL_FIXTURE_H

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "SMessage.h"
#include "Sfiledir.h"

// A datagram socket on 127.0.0.1 at a port the system picks.
struct Receiver {
    Receiver()
    {
        sockaddr_in addr = To(0);
        socklen_t len = sizeof addr;
        bind(fd, reinterpret_cast<sockaddr*>(&addr), len);
        getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len);
        port = ntohs(addr.sin_port);
    }
    ~Receiver() { close(fd); }
    static sockaddr_in To(int port)
    {
        sockaddr_in addr = sockaddr_in();
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        addr.sin_port = htons(port);
        return addr;
    }
    // The next datagram, or "none" after ms milliseconds.
    std::string Next(int ms)
    {
        pollfd ready = {fd, POLLIN, 0};
        char buf[512];
        ssize_t n = poll(&ready, 1, ms) == 1 ? recv(fd, buf, sizeof buf, 0) : -1;
        return n < 0 ? "none" : std::string(buf, n);
    }

    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    int port = 0;
};

// A root with empty "control" and "messages" directories, module "relay",
// and a dispatcher listening on the port in "DispatchSocket".
class SpoolTest : public testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/spool-test-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        root = pattern;
        MakeDir(root + "/control", 0700);
        MakeDir(root + "/messages", 0700);
        setenv("Tarnwick", root.Data(), 1);
        setenv("ModuleName", "relay", 1);
        setenv("DispatchSocket", std::to_string(dispatcher.port).c_str(), 1);
    }
    void TearDown() override { std::filesystem::remove_all(root.Data()); }

    // root + "/" + name; the names in that directory, sorted, joined by blanks.
    SString P(const SString& name) const { return root + "/" + name; }
    SString Names(const char* dir) { return BaseName(ReadDir(P(dir))).Sort().Join(" "); }
    SString Text(const SString& path) { return MapFileRead(P(path)); }
    void Touch(const SString& path) { MapFileWrite(P(path), "x"); }

    SString root;
    Receiver dispatcher;
};

// Runs body in a child process; Status waits for its exit code (-1 when it
// did not exit).
inline pid_t Spawn(const std::function<int()>& body)
{
    pid_t pid = fork();
    if (pid == 0)
        _exit(body());
    return pid;
}

inline int Status(pid_t pid)
{
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

#endif
