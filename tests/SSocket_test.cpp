#include "SSocket.h"
#include "SSocketPlus.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Strings = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

std::string Str(const SString& s) { return std::string(s.Data() ? s.Data() : "", s.Length()); }

Strings Items(const SStringList& l)
{
    Strings items;
    for (int i = 0; i < l.Count(); i++)
        items.push_back(Str(l.Get(i)));
    return items;
}

double Since(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

int Unread(int fd)
{
    int n = 0;
    ioctl(fd, FIONREAD, &n);
    return n;
}

// A connected pair of descriptors: the socket's end and the peer's end.  A
// pipe's socket end can only read.
enum Kind { SocketPair, Pipe, Tcp };
struct Link {
    int local = -1, peer = -1;
    explicit Link(Kind kind)
    {
        int fds[2];
        if (kind == SocketPair && socketpair(AF_UNIX, SOCK_STREAM, 0, fds) == 0)
            local = fds[0], peer = fds[1];
        if (kind == Pipe && pipe(fds) == 0)
            local = fds[0], peer = fds[1];
        if (kind == Tcp)
            ConnectLoopback();
    }
    ~Link()
    {
        close(local);
        close(peer);
    }
    void ConnectLoopback()
    {
        sockaddr_in addr{};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof addr;
        int listener = socket(AF_INET, SOCK_STREAM, 0);
        bind(listener, reinterpret_cast<sockaddr*>(&addr), size);
        listen(listener, 1);
        getsockname(listener, reinterpret_cast<sockaddr*>(&addr), &size);
        peer = socket(AF_INET, SOCK_STREAM, 0);
        connect(peer, reinterpret_cast<sockaddr*>(&addr), size);
        local = accept(listener, nullptr, nullptr);
        close(listener);
    }
    // The peer writes each piece once the socket has taken the one before,
    // so every piece arrives as a segment of its own; then ends its output.
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

// A socket that shows its insides and counts the calls of some slots.
class Probe : public SSocketPlus {
public:
    using SSocketPlus::SSocketPlus;
    Strings Input() const { return Items(_pendingInput); }
    int PendingOut() const { return Length(_pendingOutput); }
    int Closed() const { return _closed; }
    std::vector<int> Timeouts() const
    {
        return {_readTimeoutSec, _readTimeoutUsec, _writeTimeoutSec, _writeTimeoutUsec};
    }
    int selectReads = 0, selectWrites = 0, lineReads = 0, stringWrites = 0, settings = 0;
    int SelectRead() override { return ++selectReads, SSocket::SelectRead(); }
    int SelectWrite() override { return ++selectWrites, SSocket::SelectWrite(); }
    int operator>>(SString& l) override { return ++lineReads, SSocket::operator>>(l); }
    using SSocket::operator>>;
    int operator<<(const SString& s) override { return ++stringWrites, SSocket::operator<<(s); }
    using SSocket::operator<<;
    void SetReadTimeout(double t) override { ++settings, SSocket::SetReadTimeout(t); }
    void SetEolCRLF() override { ++settings, SSocket::SetEolCRLF(); }
};

Strings ReadAll(Probe& sock)
{
    Strings lines;
    SString line;
    while (sock >> line)
        lines.push_back(Str(line));
    EXPECT_FALSE(line.Defined());
    return lines;
}

int alarms = 0;
void OnAlarm(int) { ++alarms; }

// Installs a SIGALRM handler (with SA_RESTART, which the waits must undo)
// for the life of the object.
struct AlarmHandler {
    struct sigaction saved;
    AlarmHandler()
    {
        struct sigaction action {};
        action.sa_handler = OnAlarm;
        action.sa_flags = SA_RESTART;
        sigaction(SIGALRM, &action, &saved);
        alarms = 0;
    }
    ~AlarmHandler()
    {
        alarm(0);
        sigaction(SIGALRM, &saved, nullptr);
    }
};

}  // namespace

TEST(SSocket, CutsLinesFromOddSegmentsOnEveryKindOfDescriptor)
{
    std::string many;
    for (int i = 0; i < 300; i++)
        many += std::to_string(i) + "\r\n";
    std::string longLine = std::string(9000, 'x') + std::string("\0\xff\r\n", 4);
    struct Row {
        bool lf;
        Strings pieces, lines;
        Strings left;
    } rows[] = {
        {false, {"A\r\nB\r\nC"}, {"A\r\n", "B\r\n"}, {"C"}},
        {false, {"HEL", "LO\r", "\nWOR", "LD\r\n"}, {"HELLO\r\n", "WORLD\r\n"}, {}},
        {false, {"x\ny\r", "\n\r\n", "tail", " end"}, {"x\ny\r\n", "\r\n"}, {"tail end"}},
        {false, {many}, {}, {}},
        {false, {longLine.substr(0, 5000), longLine.substr(5000)}, {longLine}, {}},
        {true, {"A\r\nB\n", "C"}, {"A\r\n", "B\n"}, {"C"}},
    };
    for (int i = 0; i < 300; i++)
        rows[3].lines.push_back(std::to_string(i) + "\r\n");
    for (Kind kind : {SocketPair, Pipe, Tcp})
        for (const Row& row : rows) {
            SCOPED_TRACE(testing::Message() << "kind " << kind << ", first piece " << row.pieces[0].substr(0, 9));
            Link link(kind);
            Probe sock(link.local, link.local);
            if (row.lf)
                sock.SetEolLF();
            std::thread peer = link.Feed(row.pieces);
            EXPECT_EQ(ReadAll(sock), row.lines);
            peer.join();
            EXPECT_TRUE(sock.Closed());
            EXPECT_FALSE(sock.TimedOut());
            EXPECT_EQ(sock.Input(), row.left) << "a pending partial line is kept whole";
        }
}

TEST(SSocket, HandsOutReceivedLinesAfterCloseAndReadsLists)
{
    Link link(SocketPair);
    Probe sock(link.local, link.local);
    std::thread peer = link.Feed({"1\r\n2\r\n3", "\r\n4\r\n5"});
    SStringList lines("stale");
    EXPECT_EQ(sock >> lines, 1);
    EXPECT_EQ(Items(lines), (Strings{"1\r\n", "2\r\n"}));
    EXPECT_EQ(sock >> lines, 1);
    EXPECT_EQ(Items(lines), (Strings{"3\r\n", "4\r\n"}));
    EXPECT_EQ(sock >> lines, 0);
    EXPECT_EQ(lines.Count(), 0);
    EXPECT_EQ(sock.lineReads, 3) << "list reads go through the line-read slot";
    peer.join();

    Link again(SocketPair);
    Probe closing(again.local, again.local);
    std::thread feed = again.Feed({"A\r\nB\r\nC"}, false);
    SString line;
    EXPECT_EQ(closing >> line, 1);
    feed.join();
    EXPECT_EQ(closing.Close(), 1);
    again.local = -1;
    EXPECT_EQ(closing >> line, 1);
    EXPECT_EQ(Str(line), "B\r\n");
    EXPECT_EQ(closing >> line, 0);
    EXPECT_EQ(closing.Input(), Strings{"C"});
    EXPECT_EQ(closing.selectReads, 1) << "no wait once the closed flag is set";
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
    EXPECT_GE(Since(start), 0.25);
    EXPECT_LT(Since(start), 5.0);
    EXPECT_TRUE(sock.TimedOut());
    EXPECT_FALSE(sock.Closed());
    EXPECT_FALSE(line.Defined());

    ASSERT_EQ(write(link.peer, "tial\r\n", 6), 6);
    sock.SetReadTimeout(30);
    start = Clock::now();
    EXPECT_EQ(sock >> line, 0);
    EXPECT_EQ(Str(sock.Read(4)), "par") << "pending input only, no wait";
    EXPECT_EQ(sock << std::string(5000, 'w').c_str(), 0);
    EXPECT_EQ(sock.Flush(), 0);
    EXPECT_LT(Since(start), 5.0) << "a set flag fails every wait at once";

    sock.ClearTimeOut();
    EXPECT_EQ(sock >> line, 1);
    EXPECT_EQ(Str(line), "tial\r\n");

    AlarmHandler handler;
    for (int writing = 0; writing < 2; writing++) {
        sock.ClearTimeOut();
        sock.SetWriteTimeout(30);
        alarm(1);
        start = Clock::now();
        int result = 1;
        while (result && Since(start) < 20)
            result = writing ? (sock << std::string(65536, 'w').c_str()) : (sock >> line);
        EXPECT_EQ(result, 0);
        EXPECT_LT(Since(start), 20.0);
        EXPECT_TRUE(sock.TimedOut()) << "a signal counts as a time-out";
        EXPECT_FALSE(sock.Closed());
        EXPECT_EQ(alarms, writing + 1);
    }
}

TEST(SSocket, TimeOutsAreClampedAndSplit)
{
    struct {
        double value;
        std::vector<int> stored;
    } rows[] = {
        {-5, {0, 0}},          {0, {0, 0}},           {2.5, {2, 500000}}, {0.25, {0, 250000}},
        {1e9, {100000000, 0}}, {1e8, {100000000, 0}}, {NAN, {0, 0}},
    };
    Probe sock(-1, -1);
    EXPECT_EQ(sock.Timeouts(), (std::vector<int>{1800, 0, 1800, 0}));
    for (const auto& row : rows) {
        sock.SetReadTimeout(row.value);
        sock.SetWriteTimeout(row.value);
        std::vector<int> both = row.stored;
        both.insert(both.end(), row.stored.begin(), row.stored.end());
        EXPECT_EQ(sock.Timeouts(), both) << row.value;
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
    EXPECT_EQ(Unread(link.peer), 9106);
    char head[8];
    ASSERT_EQ(read(link.peer, head, 8), 8);
    EXPECT_EQ(std::string(head, 8), "250-a\r\n2");

    // A peer that stops reading makes the writes time out; no byte is lost.
    sock.SetWriteTimeout(0.3);
    Clock::time_point start = Clock::now();
    long written = 0;
    while ((sock << std::string(4000, 'q').c_str()) && written < 100000000)
        written += 4000;
    EXPECT_LT(Since(start), 10.0);
    EXPECT_TRUE(sock.TimedOut());
    EXPECT_GE(sock.PendingOut(), 4096);
    long received = -9098;  // still unread from above
    std::thread reader([&] {
        char buf[65536];
        for (ssize_t n; (n = read(link.peer, buf, sizeof buf)) > 0;)
            received += n;
    });
    sock.ClearTimeOut();
    sock.SetWriteTimeout(10);
    EXPECT_EQ(sock.Flush(), 1);
    EXPECT_GT(sock.selectWrites, 1);
    shutdown(link.local, SHUT_WR);
    reader.join();
    EXPECT_EQ(received, written + 4000);

    // A vanished peer makes a send fail without killing the process.
    Link gone(SocketPair);
    SSocket lost(gone.local, gone.local);
    close(gone.peer), gone.peer = -1;
    EXPECT_EQ(lost << std::string(5000, 'l').c_str(), 0);
}

TEST(SSocket, CloseClosesEachDescriptorOnce)
{
    int pair[2], p[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    ASSERT_EQ(pipe(p), 0);
    SSocket same(pair[0], pair[0]), two(p[0], p[1]);
    EXPECT_EQ(same.Close(), 1) << "closing the one descriptor twice would fail";
    EXPECT_EQ(two.Close(), 1);
    for (int fd : {pair[0], p[0], p[1]})
        EXPECT_EQ(fcntl(fd, F_GETFD), -1);
    EXPECT_EQ(same.Close(), 0);
    close(pair[1]);
}

TEST(SSocket, BlockUnblockAndLingerTouchBothDescriptors)
{
    int p[2];
    ASSERT_EQ(pipe(p), 0);
    SSocket sock(p[0], p[1]);
    sock.Unblock();
    EXPECT_TRUE(fcntl(p[0], F_GETFL) & O_NONBLOCK);
    EXPECT_TRUE(fcntl(p[1], F_GETFL) & O_NONBLOCK);
    sock.Block();
    EXPECT_FALSE(fcntl(p[0], F_GETFL) & O_NONBLOCK);
    EXPECT_FALSE(fcntl(p[1], F_GETFL) & O_NONBLOCK);
    close(p[0]), close(p[1]);

    Link link(Tcp);
    SSocket tcp(link.local, link.local);
    tcp.SetLingerOption(1, 7);
    linger value{};
    socklen_t size = sizeof value;
    getsockopt(link.local, SOL_SOCKET, SO_LINGER, &value, &size);
    EXPECT_EQ(value.l_onoff, 1);
    EXPECT_EQ(value.l_linger, 7);
}

TEST(SSocket, EveryStepGoesThroughTheVirtualSlotsInOrder)
{
    Probe sock(-1, -1);
    sock.Init(-1, -1);
    EXPECT_EQ(sock.settings, 2) << "Init sets the time-out and the end of line through the slots";
    SString line;
    EXPECT_EQ(sock >> line, 0) << "an unusable descriptor fails the wait";
    EXPECT_EQ(sock.selectReads, 1);
    EXPECT_TRUE(sock.Closed());

#if defined(__x86_64__) && defined(__GNUC__)
    // With the Itanium C++ ABI a pointer to a virtual member holds 1 + its
    // byte offset in the table; the destructor takes slots 0 and 1.
    auto slot = [](auto member) {
        struct { std::uintptr_t ptr; std::ptrdiff_t adj; } rep;
        static_assert(sizeof member == sizeof rep, "Itanium member pointer");
        std::memcpy(&rep, &member, sizeof rep);
        return static_cast<int>((rep.ptr - 1) / sizeof(void*));
    };
    std::vector<int> slots = {
        slot(static_cast<int (SSocket::*)(SStringList&)>(&SSocket::operator>>)),
        slot(static_cast<int (SSocket::*)(SString&)>(&SSocket::operator>>)),
        slot(static_cast<int (SSocket::*)(const SStringList&)>(&SSocket::operator<<)),
        slot(static_cast<int (SSocket::*)(const SString&)>(&SSocket::operator<<)),
        slot(static_cast<int (SSocket::*)(const char*)>(&SSocket::operator<<)),
        slot(static_cast<int (SSocket::*)(char)>(&SSocket::operator<<)),
        slot(&SSocket::TimedOut), slot(&SSocket::Block), slot(&SSocket::Unblock),
        slot(&SSocket::SetLingerOption), slot(&SSocket::ClearTimeOut), slot(&SSocket::SetEolCRLF),
        slot(&SSocket::SetEolLF), slot(&SSocket::SetReadTimeout), slot(&SSocket::SetWriteTimeout),
        slot(&SSocket::SelectRead), slot(&SSocket::SelectWrite), slot(&SSocket::Init),
        slot(&SSocket::Flush), slot(&SSocket::Close)};
    for (int i = 0; i < int(slots.size()); i++)
        EXPECT_EQ(slots[i], i + 2) << "member " << i;
#endif
}

TEST(SSocketPlus, ReadTakesExactCountsAndKeepsSplitLineEndsTogether)
{
    struct Row {
        bool lf;
        int n;
        std::string result;
        Strings left;
    } rows[] = {
        {false, 3, "ab\r", {"\ncd\r\n"}},      {false, 0, "", {"ab\r\n", "cd\r\n"}},
        {false, -2, "", {"ab\r\n", "cd\r\n"}}, {false, 5, "ab\r\nc", {"d\r\n"}},
        {false, 8, "ab\r\ncd\r\n", {}},        {true, 2, "ab", {"\r\n", "cd\r\n"}},
    };
    for (const Row& row : rows) {
        Link link(SocketPair);
        Probe sock(link.local, link.local);
        if (row.lf)
            sock.SetEolLF();
        ASSERT_EQ(write(link.peer, "x\r\nab\r\ncd\r\n", 11), 11);
        SString line;
        ASSERT_EQ(sock >> line, 1);
        SString got = sock.Read(row.n);
        EXPECT_TRUE(got.Defined());
        EXPECT_EQ(Str(got), row.result) << row.n;
        EXPECT_EQ(sock.Input(), row.left) << row.n;
    }

    Link link(Pipe);
    Probe sock(link.local, link.local);
    sock.SetReadTimeout(0.3);
    std::thread peer = link.Feed({"a\r\nb", std::string("\0\xff", 2), "cd"}, false);
    SString line;
    EXPECT_EQ(sock >> line, 1);
    EXPECT_EQ(Str(sock.Read(4)), std::string("b\0\xff" "c", 4));
    peer.join();
    EXPECT_EQ(Str(sock.Read(5)), "d") << "a time-out gives what arrived";
    EXPECT_TRUE(sock.TimedOut());
    sock.ClearTimeOut();
    close(link.peer), link.peer = -1;
    EXPECT_EQ(Str(sock.Read(1)), "");
    EXPECT_TRUE(sock.Closed());
}
