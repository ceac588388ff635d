#include "Snetwork.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace {

const int Signals[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD};

int restartDuringWait = -1;

// Looks at its own disposition while the wait it interrupts is running.
void OnAlarm(int)
{
    struct sigaction now;
    sigaction(SIGALRM, nullptr, &now);
    restartDuringWait = (now.sa_flags & SA_RESTART) != 0;
}

int Restarts(int sig)
{
    struct sigaction now;
    sigaction(sig, nullptr, &now);
    return (now.sa_flags & SA_RESTART) != 0;
}

}  // namespace

TEST(Select, SignalsEndTheWaitAndRestartIsSetAfterwards)
{
    struct sigaction saved[7];
    for (int i = 0; i < 7; i++)
        sigaction(Signals[i], nullptr, &saved[i]);
    struct sigaction action {};
    action.sa_handler = OnAlarm;
    action.sa_flags = SA_RESTART;
    sigaction(SIGALRM, &action, nullptr);
    action.sa_handler = SIG_IGN;
    action.sa_flags = 0;
    sigaction(SIGHUP, &action, nullptr);

    int p[2];
    ASSERT_EQ(pipe(p), 0);
    fd_set set;
    FD_ZERO(&set);
    FD_SET(p[0], &set);
    struct timeval limit = {30, 0};
    alarm(1);
    errno = 0;
    EXPECT_EQ(Select(p[0] + 1, &set, nullptr, nullptr, &limit), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(restartDuringWait, 0);
    for (int sig : Signals)
        EXPECT_TRUE(Restarts(sig)) << sig;

    ASSERT_EQ(write(p[1], "x", 1), 1);
    FD_SET(p[0], &set);
    limit = {1, 0};
    EXPECT_EQ(Select(p[0] + 1, &set, nullptr, nullptr, &limit), 1);
    EXPECT_TRUE(FD_ISSET(p[0], &set));
    char byte;
    ASSERT_EQ(read(p[0], &byte, 1), 1);
    limit = {0, 0};
    EXPECT_EQ(Select(p[0] + 1, &set, nullptr, nullptr, &limit), 0);

    close(p[0]), close(p[1]);
    for (int i = 0; i < 7; i++)
        sigaction(Signals[i], &saved[i], nullptr);
}
