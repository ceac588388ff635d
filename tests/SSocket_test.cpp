#include "SSocket.h"
#include "SSocketPlus.h"

#include <gtest/gtest.h>

#include "text_helpers.h"

#include <arpa/inet.h>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Strings = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }
int Unread(int fd)
{
    int n = 0;
    return ioctl(fd, FIONREAD, &n), n;
}

// A connected pair: the socket's end and the peer's end (a pipe's socket end
// only reads).
enum Kind { SocketPair, Pipe, Tcp };
struct Link {
    int local = -1, peer = -1;
    explicit Link(Kind kind)
    {
        int fds[2] = {-1, -1};
        EXPECT_EQ(kind == SocketPair ? socketpair(AF_UNIX, SOCK_STREAM, 0, fds) : kind == Pipe ? pipe(fds) : 0, 0);
        local = fds[0], peer = fds[1];
        if (kind != Tcp)
            return;
        sockaddr_in addr{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        socklen_t size = sizeof addr;
        int listener = socket(AF_INET, SOCK_STREAM, 0);
        bind(listener, reinterpret_cast<sockaddr*>(&addr), size);
        listen(listener, 1);
        getsockname(listener, reinterpret_cast<sockaddr*>(&addr), &size);
        peer = socket(AF_INET, SOCK_STREAM, 0);
        EXPECT_EQ(connect(peer, reinterpret_cast<sockaddr*>(&addr), size), 0);
        local = accept(listener, nullptr, nullptr);
        close(listener);
    }
    ~Link() { close(local), close(peer); }
    // Writes each piece once the socket has taken the one before, so that
    // each arrives as a segment of its own; then ends the peer's output.
    std::thread Feed(Strings pieces, bool end = true)
    {
        return std::thread([this, pieces, end] {
            for (const std::string& piece : pieces) {
                for (int i = 0; i < 2000 && Unread(local) > 0; i++)
                    usleep(1000);
                EXPECT_EQ(write(peer, piece.data(), piece.size()), ssize_t(piece.size()));
            }
            if (end && shutdown(peer, SHUT_WR) != 0)
                close(peer), peer = -1;
        });
    }
};

// Shows the insides and counts the calls of some slots.
struct Probe : SSocketPlus {
    using SSocketPlus::SSocketPlus;
    using SSocket::operator>>;
    using SSocket::operator<<;
    Strings Input() const
    {
        Strings items;
        for (int i = 0; i < _pendingInput.Count(); i++)
            items.push_back(Str(_pendingInput.Get(i)));
        return items;
    }
    int Closed() const { return _closed; }
    std::vector<int> Timeouts() const { return {_readTimeoutSec, _readTimeoutUsec, _writeTimeoutSec, _writeTimeoutUsec}; }
    int selectReads = 0, lineReads = 0, stringWrites = 0;
    int SelectRead() override { return ++selectReads, SSocket::SelectRead(); }
    int operator>>(SString& l) override { return ++lineReads, SSocket::operator>>(l); }
    int operator<<(const SString& s) override { return ++stringWrites, SSocket::operator<<(s); }
};

int Restarts(int sig)
{
    struct sigaction now;
    return sigaction(sig, nullptr, &now), (now.sa_flags & SA_RESTART) != 0;
}
int alarms = 0, restartWhileWaiting = -1;
void OnAlarm(int) { ++alarms, restartWhileWaiting = Restarts(SIGALRM); }

}  // namespace

TEST(SSocket, CutsLinesFromOddSegmentsOnEveryKindOfDescriptor)
{
    std::string longLine = std::string(9000, 'x') + std::string("\0\xff\r\n", 4), manyText;
    Strings many(300, "NOOP\r\n");
    for (const std::string& line : many)
        manyText += line;
    struct {
        bool lf;
        Strings pieces, lines, left;
    } rows[] = {
        {false, {"A\r\nB\r\nC"}, {"A\r\n", "B\r\n"}, {"C"}},
        {false, {"HEL", "LO\r", "\nWOR", "LD\r\n"}, {"HELLO\r\n", "WORLD\r\n"}, {}},
        {false, {"x\ny\r", "\n\r\n", "tail", " end"}, {"x\ny\r\n", "\r\n"}, {"tail end"}},
        {false, {manyText}, many, {}},
        {false, {longLine.substr(0, 5000), longLine.substr(5000)}, {longLine}, {}},
        {true, {"A\r\nB\n", "C"}, {"A\r\n", "B\n"}, {"C"}},
    };
    for (Kind kind : {SocketPair, Pipe, Tcp})
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message() << "kind " << kind << ", " << row.pieces[0].substr(0, 9));
            Link link(kind);
            Probe sock(link.local, link.local);
            if (row.lf)
                sock.SetEolLF();
            std::thread peer = link.Feed(row.pieces);
            Strings lines;
            SString line;
            while (sock >> line)
                lines.push_back(Str(line));
            peer.join();
            EXPECT_EQ(lines, row.lines);
            EXPECT_TRUE(!line.Defined() && sock.Closed() && !sock.TimedOut());
            EXPECT_EQ(sock.Input(), row.left) << "a pending partial line is kept whole";
        }

    Link link(SocketPair);
    Probe sock(link.local, link.local);
    std::thread peer = link.Feed({"1\r\n2\r\n3", "\r\n4\r\n5"});
    SStringList lines("stale");
    EXPECT_TRUE((sock >> lines) && lines.Join("|") == "1\r\n|2\r\n");
    EXPECT_TRUE((sock >> lines) && lines.Join("|") == "3\r\n|4\r\n");
    EXPECT_TRUE(!(sock >> lines) && lines.Count() == 0);
    EXPECT_EQ(sock.lineReads, 3) << "list reads go through the line-read slot";
    peer.join();
}

TEST(SSocket, TimeOutsAndSignalsEndWaitsUntilCleared)
{
    Link link(SocketPair);
    Probe sock(link.local, link.local);
    sock.SetReadTimeout(0.3);
    ASSERT_EQ(write(link.peer, "par", 3), 3);
    SString line("x");
    Clock::time_point start = Clock::now();
    EXPECT_EQ(sock >> line, 0);
    EXPECT_TRUE(Since(start) > 0.25 && Since(start) < 5);
    EXPECT_TRUE(sock.TimedOut() && !sock.Closed() && !line.Defined());

    ASSERT_EQ(write(link.peer, "tial\r\n", 6), 6);
    sock.SetReadTimeout(30);
    start = Clock::now();
    EXPECT_EQ((sock >> line) + (sock << std::string(5000, 'w').c_str()) + sock.Flush(), 0);
    EXPECT_LT(Since(start), 5) << "a set flag fails every wait at once";
    sock.ClearTimeOut();
    EXPECT_TRUE((sock >> line) && Str(line) == "partial\r\n");

    struct sigaction action {}, saved;
    action.sa_handler = OnAlarm;
    action.sa_flags = SA_RESTART;  // the wait must clear it to be interrupted
    sigaction(SIGALRM, &action, &saved);
    for (int writing = 0; writing < 2; writing++) {
        sock.ClearTimeOut();
        sock.SetWriteTimeout(30);
        alarm(1);
        start = Clock::now();
        while (Since(start) < 20 && (writing ? (sock << std::string(65536, 'w').c_str()) : (sock >> line)))
            ;
        EXPECT_LT(Since(start), 20);
        EXPECT_TRUE(sock.TimedOut() && !sock.Closed()) << "a signal counts as a time-out";
        EXPECT_EQ(alarms, writing + 1);
    }
    EXPECT_EQ(restartWhileWaiting, 0);
    for (int sig : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD})
        EXPECT_TRUE(Restarts(sig)) << "set after every wait: " << sig;
    sigaction(SIGALRM, &saved, nullptr);
}

TEST(SSocket, TimeOutsAreClampedAndSplit)
{
    struct {
        double value;
        int sec, usec;
    } rows[] = {{-5, 0, 0}, {0, 0, 0}, {2.5, 2, 500000}, {0.25, 0, 250000}, {1e9, 100000000, 0}, {NAN, 0, 0}};
    Probe sock(-1, -1);
    EXPECT_EQ(sock.Timeouts(), (std::vector<int>{1800, 0, 1800, 0}));
    for (const auto& row : rows) {
        sock.SetReadTimeout(row.value);
        sock.SetWriteTimeout(row.value);
        EXPECT_EQ(sock.Timeouts(), (std::vector<int>{row.sec, row.usec, row.sec, row.usec})) << row.value;
    }
}

TEST(SSocket, WritesWaitForAFullBufferAndNeverLoseBytes)
{
    Link link(SocketPair);
    Probe sock(link.local, link.local);
    SStringList reply;
    reply.Push("250-a\r\n");
    reply.Push("250 b\r\n");
    EXPECT_EQ(sock << reply, 1);
    EXPECT_EQ(sock << 'x', 1);
    EXPECT_EQ(sock << static_cast<const char*>(nullptr), 1);
    EXPECT_EQ(sock.stringWrites, 4) << "every write goes through the string-write slot";
    EXPECT_EQ(sock << std::string(4096 - 16, 'y').c_str(), 1);
    EXPECT_EQ(Unread(link.peer), 0) << "below the threshold nothing is sent";
    EXPECT_EQ(sock << "z", 1);
    EXPECT_EQ(Unread(link.peer), 4096);
    EXPECT_EQ(sock << std::string(5000, 'v').c_str(), 1);
    EXPECT_EQ(Unread(link.peer), 9096) << "a write past the threshold goes at once";
    EXPECT_EQ(sock << "0123456789", 1);
    EXPECT_EQ(sock.Flush(), 1);
    EXPECT_EQ(sock.Flush(), 1);
    char head[8];
    ASSERT_EQ(read(link.peer, head, 8), 8);
    EXPECT_EQ(std::string(head, 8), "250-a\r\n2");

    // A peer that stops reading makes the writes time out; no byte is lost.
    sock.SetWriteTimeout(0.3);
    Clock::time_point start = Clock::now();
    long written = 4000, received = -9098;  // the failing write's bytes; those unread above
    while ((sock << std::string(4000, 'q').c_str()) && written < 100000000)
        written += 4000;
    EXPECT_TRUE(Since(start) < 10 && sock.TimedOut());
    std::thread reader([&] {
        char buf[65536];
        for (ssize_t n; (n = read(link.peer, buf, sizeof buf)) > 0;)
            received += n;
    });
    sock.ClearTimeOut();
    EXPECT_EQ(sock.Flush(), 1);
    shutdown(link.local, SHUT_WR);
    reader.join();
    EXPECT_EQ(received, written);

    Link gone(SocketPair);
    SSocket lost(gone.local, gone.local);
    close(gone.peer), gone.peer = -1;
    EXPECT_EQ(lost << std::string(5000, 'l').c_str(), 0) << "a vanished peer fails the send, no SIGPIPE";
}

TEST(SSocket, CloseClosesEachDescriptorOnceAndKeepsReceivedLines)
{
    int pair[2], p[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair) + pipe(p), 0);
    Probe same(pair[0], pair[0]);
    SSocket two(p[0], p[1]);
    ASSERT_EQ(write(pair[1], "A\r\nB\r\nC", 7), 7);
    SString line;
    EXPECT_EQ(same >> line, 1);
    EXPECT_EQ(same.Close(), 1) << "closing the one descriptor twice would fail";
    EXPECT_EQ(two.Close(), 1);
    for (int fd : {pair[0], p[0], p[1]})
        EXPECT_EQ(fcntl(fd, F_GETFD), -1);
    EXPECT_EQ(same.Close(), 0);
    close(pair[1]);
    EXPECT_TRUE((same >> line) && Str(line) == "B\r\n") << "received lines outlive the closed flag";
    EXPECT_EQ(same >> line, 0);
    EXPECT_EQ(same.Input(), Strings{"C"});
    EXPECT_EQ(same.selectReads, 1) << "no wait once the closed flag is set";
}

TEST(SSocketPlus, ReadTakesExactCountsAndKeepsSplitLineEndsTogether)
{
    struct {
        bool lf;
        int n;
        std::string result;
        Strings left;
    } rows[] = {
        {false, 3, "ab\r", {"\ncd\r\n"}},      {false, 0, "", {"ab\r\n", "cd\r\n"}},
        {false, -2, "", {"ab\r\n", "cd\r\n"}}, {false, 5, "ab\r\nc", {"d\r\n"}},
        {false, 8, "ab\r\ncd\r\n", {}},        {true, 2, "ab", {"\r\n", "cd\r\n"}},
    };
    for (const auto& row : rows) {
        Link link(SocketPair);
        Probe sock(link.local, link.local);
        if (row.lf)
            sock.SetEolLF();
        ASSERT_EQ(write(link.peer, "x\r\nab\r\ncd\r\n", 11), 11);
        SString line;
        ASSERT_EQ(sock >> line, 1);
        SString got = sock.Read(row.n);
        EXPECT_TRUE(got.Defined() && Str(got) == row.result) << row.n;
        EXPECT_EQ(sock.Input(), row.left) << row.n;
    }

    Link link(Pipe);
    Probe sock(link.local, link.local);
    sock.SetReadTimeout(0.3);
    std::thread peer = link.Feed({"a\r\nb", std::string("\0\xff", 2), "cd"}, false);
    SString line;
    EXPECT_EQ(sock >> line, 1);
    EXPECT_EQ(Str(sock.Read(4)), std::string("b\0\xff" "c", 4)) << "pending, then what arrives";
    peer.join();
    EXPECT_TRUE(Str(sock.Read(5)) == "d" && sock.TimedOut()) << "a time-out gives what arrived";
    sock.ClearTimeOut();
    close(link.peer), link.peer = -1;
    EXPECT_TRUE(Str(sock.Read(1)) == "" && sock.Closed());
}
