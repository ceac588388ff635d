#include "SSocketPlus.h"

#include <gtest/gtest.h>

#include "text_helpers.h"

#include <arpa/inet.h>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <string>
#include <thread>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

using Strings = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }
int Unread(int fd)
{
    int n = 0;
    ioctl(fd, FIONREAD, &n);
    return n;
}

// A socket over a fresh connection, showing its insides and counting its
// waits for input.  peer is the other end (a pipe's socket end only
// reads).
enum Kind { SocketPair, Pipe, Tcp };
struct Conn : SSocketPlus {
    using SSocket::_readFd;
    int peer = -1, selectReads = 0;
    // Written by the peer one before each wait for input, once the socket
    // has taken the one before, so that each arrives as a segment of its
    // own; after the last the peer's output ends.
    Strings feed;
    explicit Conn(Kind kind, bool lf = false, Strings pieces = {}) : feed(pieces)
    {
        int fds[2] = {-1, -1};
        EXPECT_EQ(kind == SocketPair ? socketpair(AF_UNIX, SOCK_STREAM, 0, fds) : kind == Pipe ? pipe(fds) : 0, 0);
        if (kind == Tcp) {
            sockaddr_in addr{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
            socklen_t size = sizeof addr;
            int listener = socket(AF_INET, SOCK_STREAM, 0);
            bind(listener, reinterpret_cast<sockaddr*>(&addr), size);
            listen(listener, 1);
            getsockname(listener, reinterpret_cast<sockaddr*>(&addr), &size);
            fds[1] = socket(AF_INET, SOCK_STREAM, 0);
            EXPECT_EQ(connect(fds[1], reinterpret_cast<sockaddr*>(&addr), size), 0);
            fds[0] = accept(listener, nullptr, nullptr);
            close(listener);
        }
        Init(fds[0], fds[0]);
        peer = fds[1];
        if (lf)
            SetEolLF();
    }
    ~Conn() override
    {
        close(_readFd);
        close(peer);
    }
    int SelectRead() override
    {
        ++selectReads;
        if (!feed.empty() && Unread(_readFd) == 0) {
            EXPECT_EQ(write(peer, feed[0].data(), feed[0].size()), ssize_t(feed[0].size()));
            feed.erase(feed.begin());
            if (feed.empty() && shutdown(peer, SHUT_WR) != 0) {
                close(peer);
                peer = -1;
            }
        }
        return SSocket::SelectRead();
    }
    std::string Input() const { return Joined(_pendingInput); }
    int Closed() const { return _closed; }
};

int Restarts(int sig)
{
    struct sigaction now;
    sigaction(sig, nullptr, &now);
    return (now.sa_flags & SA_RESTART) != 0;
}
int alarms = 0, restartWhileWaiting = -1;
void OnAlarm(int)
{
    ++alarms;
    restartWhileWaiting = Restarts(SIGALRM);
}

}  // namespace

// Read in lists: each list starts with the line read and adds the complete
// lines already received.
TEST(SSocket, CutsLinesFromOddSegmentsOnEveryKindOfDescriptor)
{
    std::string longLine = std::string(9000, 'x') + std::string("\0\xff\r\n", 4);
    struct {
        bool lf;
        Strings pieces;
        std::string lines, left;
    } rows[] = {
        {false, {"A\r\nB\r\nC"}, "A\r\n|B\r\n", "C"},
        {false, {"HEL", "LO\r", "\nWOR", "LD\r\n"}, "HELLO\r\n|WORLD\r\n", "-"},
        {false, {"x\ny\r", "\n\r\n", "tail", " end"}, "x\ny\r\n|\r\n", "tail end"},
        {false, {longLine.substr(0, 5000), longLine.substr(5000)}, longLine, "-"},
        {true, {"A\r\nB\n", "C"}, "A\r\n|B\n", "C"},
    };
    for (Kind kind : {SocketPair, Pipe, Tcp})
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message() << "kind " << kind << ", " << row.pieces[0].substr(0, 9));
            Conn sock(kind, row.lf, row.pieces);
            SStringList lines, batch("stale");
            while (sock >> batch)
                lines.Push(batch);
            EXPECT_EQ(Joined(lines), row.lines);
            EXPECT_TRUE(batch.Count() == 0 && sock.Closed() && !sock.TimedOut());
            EXPECT_EQ(sock.Input(), row.left) << "a pending partial line is kept whole";
        }
}

TEST(SSocket, ReadsWhatAPeerInAnotherThreadSendsWhileItWaits)
{
    Conn sock(Tcp);
    std::thread peer([&sock] {
        for (std::string piece : {"HEL", "LO\r", "\nWOR", "LD\r\nEND"}) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            EXPECT_EQ(write(sock.peer, piece.data(), piece.size()), ssize_t(piece.size()));
        }
        shutdown(sock.peer, SHUT_WR);
    });
    SStringList lines;
    for (SString line; sock >> line;)
        lines.Push(line);
    peer.join();
    EXPECT_EQ(Joined(lines), "HELLO\r\n|WORLD\r\n");
    EXPECT_TRUE(sock.Input() == "END" && sock.Closed() && !sock.TimedOut());
}

TEST(SSocket, TimeOutsAndSignalsEndWaitsUntilCleared)
{
    Conn sock(SocketPair);
    ASSERT_EQ(write(sock.peer, "par", 3), 3);
    SString line("x");
    Clock::time_point start;
    for (double limit : {-5.0, double(NAN), 0.3}) {  // below 0 and NaN poll
        sock.ClearTimeOut();
        sock.SetReadTimeout(limit);
        start = Clock::now();
        EXPECT_TRUE(!(sock >> line) && !line.Defined() && sock.TimedOut() && !sock.Closed()) << limit;
    }
    sock.SetReadTimeout(30);
    EXPECT_EQ((sock >> line) + (sock << std::string(5000, 'w').c_str()) + sock.Flush(), 0);
    EXPECT_TRUE(Since(start) > 0.25 && Since(start) < 5) << "a set flag fails every wait at once";

    ASSERT_EQ(write(sock.peer, "tial\r\n", 6), 6);
    sock.ClearTimeOut();
    EXPECT_TRUE((sock >> line) && Str(line) == "partial\r\n");

    // glibc's signal sets SA_RESTART: the wait must clear it to be interrupted.
    sighandler_t saved = signal(SIGALRM, OnAlarm);
    sock.SetWriteTimeout(30);
    for (int writing = 0; writing < 2; writing++) {
        sock.ClearTimeOut();
        alarm(1);
        start = Clock::now();
        while (Since(start) < 20 && (writing ? (sock << std::string(65536, 'w').c_str()) : (sock >> line)))
            ;
        EXPECT_LT(Since(start), 20);
        EXPECT_TRUE(alarms == writing + 1 && sock.TimedOut() && !sock.Closed()) << "a signal counts as a time-out";
    }
    EXPECT_EQ(restartWhileWaiting, 0);
    for (int sig : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD})
        EXPECT_TRUE(Restarts(sig)) << "set after every wait: " << sig;
    signal(SIGALRM, saved);
}

TEST(SSocket, WritesWaitForAFullBufferAndNeverLoseBytes)
{
    Conn sock(SocketPair);
    sock.SetWriteTimeout(1e10);  // past what select takes: must be cut down
    char buf[65536];
    EXPECT_EQ(sock << std::string(5000, 'f').c_str(), 1);
    EXPECT_EQ(recv(sock.peer, buf, sizeof buf, MSG_DONTWAIT), 5000) << "past the threshold a write goes at once";
    const char* reply[] = {"250-a\r\n", "250 b\r\n", nullptr};
    EXPECT_EQ(sock << SStringList(reply), 1);
    EXPECT_EQ(sock << std::string(4096 - 15, 'y').c_str(), 1);
    EXPECT_EQ(Unread(sock.peer), 0) << "below the threshold nothing is sent";
    EXPECT_EQ(sock << "z", 1);
    EXPECT_EQ(Unread(sock.peer), 4096);
    EXPECT_TRUE(recv(sock.peer, buf, 8, MSG_DONTWAIT) == 8 && std::string(buf, 8) == "250-a\r\n2");

    // A peer that stops reading makes the writes time out; no byte is lost.
    sock.SetWriteTimeout(0.3);
    long written = 4000, received = -4088;  // the failing write's bytes; those unread above
    while ((sock << std::string(4000, 'q').c_str()) && written < 100000000)
        written += 4000;
    EXPECT_TRUE(sock.TimedOut());
    sock.ClearTimeOut();
    for (ssize_t n; (n = recv(sock.peer, buf, sizeof buf, MSG_DONTWAIT)) > 0;)
        received += n;
    EXPECT_EQ(sock.Flush(), 1);
    received += recv(sock.peer, buf, sizeof buf, MSG_DONTWAIT);
    EXPECT_EQ(received, written);
    close(sock.peer);
    sock.peer = -1;
    EXPECT_EQ(sock << std::string(5000, 'l').c_str(), 0) << "a vanished peer fails the send, no SIGPIPE";
}

TEST(SSocket, CloseClosesEachDescriptorOnceAndKeepsReceivedLines)
{
    Conn same(SocketPair, false, {"A\r\nB\r\nC"}), two(Pipe);
    two.Init(two._readFd, two.peer);
    auto nonBlocking = [](int fd) { return (fcntl(fd, F_GETFL) & O_NONBLOCK) != 0; };
    two.Unblock();
    EXPECT_TRUE(nonBlocking(two._readFd) && nonBlocking(two.peer)) << "both descriptors";
    two.Block();
    EXPECT_FALSE(nonBlocking(two._readFd) || nonBlocking(two.peer));
    SString line;
    EXPECT_EQ(same >> line, 1);
    EXPECT_EQ(same.Close(), 1) << "closing the one descriptor twice would fail";
    EXPECT_EQ(two.Close(), 1);
    // Closing again fails; the destructors' closes fail the same way.
    for (int fd : {same._readFd, two._readFd, two.peer})
        EXPECT_EQ(close(fd), -1) << "still open: " << fd;
    EXPECT_EQ(same.Close(), 0);
    EXPECT_TRUE((same >> line) && Str(line) == "B\r\n") << "received lines outlive the closed flag";
    EXPECT_EQ(same >> line, 0);
    EXPECT_EQ(same.selectReads, 1) << "no wait once the closed flag is set";
}

TEST(SSocketPlus, ReadTakesExactCountsAndKeepsSplitLineEndsTogether)
{
    struct {
        bool lf;
        int n;
        std::string result, left;
    } rows[] = {
        {false, 3, "ab\r", "\ncd\r\n"},   {false, 0, "", "ab\r\n|cd\r\n"},
        {false, -2, "", "ab\r\n|cd\r\n"}, {false, 5, "ab\r\nc", "d\r\n"},
        {false, 8, "ab\r\ncd\r\n", "-"},  {true, 3, "ab\r", "\n|cd\r\n"},
    };
    SString line;
    for (const auto& row : rows) {
        Conn sock(SocketPair, row.lf, {"x\r\nab\r\ncd\r\n"});
        ASSERT_EQ(sock >> line, 1);
        SString got = sock.Read(row.n);
        EXPECT_TRUE(got.Defined() && Str(got) == row.result) << row.n;
        EXPECT_EQ(sock.Input(), row.left) << row.n;
    }

    // Pending bytes, then received ones, until the end of input.
    Conn sock(Pipe, false, {"a\r\nb", std::string("\0\xff", 2), "cd"});
    EXPECT_EQ(sock >> line, 1);
    EXPECT_EQ(Str(sock.Read(4)), std::string("b\0\xff" "c", 4));
    EXPECT_TRUE(Str(sock.Read(5)) == "d" && sock.Closed()) << "the end of input gives what arrived";
}
