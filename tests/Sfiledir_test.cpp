#include "Sfiledir.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace {

class FileDir : public ::testing::Test {
protected:
    std::string dir;

    void SetUp() override
    {
        char name[] = "/tmp/Sfiledir_test.XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        dir = name;
    }
    void TearDown() override { std::filesystem::remove_all(dir); }

    SString P(const char* name) const { return SString((dir + "/" + name).c_str()); }

    void Write(const char* name, const std::string& bytes) const
    {
        ASSERT_EQ(MapFileWrite(P(name), SString(bytes.data(), (int)bytes.size())), 1) << name;
    }
};

std::string Text(const SString& s)
{
    return s.Defined() ? std::string(s.Data(), s.Length()) : "(undefined)";
}

double Seconds()
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec + ts.tv_nsec / 1e9;
}

}  // namespace

TEST_F(FileDir, FileTestsSizeAgeAndSpace)
{
    Write("file", "12345");
    mkdir(P("dir").Data(), 0700);
    symlink("file", P("link").Data());
    struct { SString path; int exists, regular, directory; long size; } rows[] = {
        {P("file"), 1, 1, 0, 5},   {P("dir"), 1, 0, 1, -1}, {P("link"), 1, 0, 0, -1},
        {P("missing"), 0, 0, 0, -1}, {SString(), 0, 0, 0, -1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FileExists(row.path), row.exists) << Text(row.path);
        EXPECT_EQ(IsRegular(row.path), row.regular) << Text(row.path);
        EXPECT_EQ(IsDirectory(row.path), row.directory) << Text(row.path);
        EXPECT_EQ(FileSize(row.path), row.size) << Text(row.path);
    }
    EXPECT_TRUE(IsReadable(P("file")) && IsWriteable(P("file")));
    EXPECT_FALSE(IsExecutable(P("file")));

    struct timeval twoDaysAgo[2] = {{time(0) - 2 * 86400, 0}, {time(0) - 2 * 86400, 0}};
    ASSERT_EQ(utimes(P("file").Data(), twoDaysAgo), 0);
    EXPECT_NEAR(FileAge(P("file")), 2.0, 0.001);
    EXPECT_EQ(FileAge(P("missing")), -1.0);
    EXPECT_GT(FreeDiskSpace(P("dir")), 0.0);
    EXPECT_EQ(FreeDiskSpace(P("missing")), -1.0);
    EXPECT_EQ(Text(RealPath(P("dir/../link"))), Text(RealPath(P("file"))));
    EXPECT_EQ(Text(RealPath(P("missing"))), Text(P("missing")));
}

TEST_F(FileDir, MakeDirAndReadDir)
{
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    ASSERT_EQ(Chdir(SString(dir.c_str())), 1);
    EXPECT_EQ(MakeDir("a/b/c/", 0770), 1);
    EXPECT_EQ(MakeDir("a/b/c/", 0770), 1);
    EXPECT_EQ(Chdir(cwd), 1);
    EXPECT_TRUE(IsDirectory(P("a/b/c")));
    EXPECT_EQ(MakeDir(P("x//y"), 0770), 1);
    Write("plain", "");
    EXPECT_EQ(MakeDir(P("plain/sub"), 0770), 0);
    EXPECT_EQ(MakeDir("", 0770), 0);

    SStringList entries = ReadDir(SString((dir + "//a//").c_str()));
    ASSERT_TRUE(entries.Defined());
    EXPECT_EQ(entries.Count(), 1);
    EXPECT_EQ(Text(entries.Get(0)), dir + "/a/b");
    SStringList top = ReadDir(SString(dir.c_str()));
    EXPECT_EQ(Text(top.Sort().Join(" ")), dir + "/a " + dir + "/plain " + dir + "/x");
    SStringList empty = ReadDir(P("a/b/c"));
    EXPECT_TRUE(empty.Defined() && empty.Count() == 0);
    EXPECT_FALSE(ReadDir(P("missing")).Defined());
    EXPECT_FALSE(ReadDir("").Defined());
}

TEST_F(FileDir, RemoveRenameAndLink)
{
    Write("file", "x");
    mkdir(P("dir").Data(), 0700);
    EXPECT_EQ(RemoveFile(P("dir")), 0);
    EXPECT_EQ(RemoveDir(P("file")), 0);
    EXPECT_EQ(Chdir(P("file")), 0);
    EXPECT_EQ(LinkFile(P("dir"), P("dirlink")), 0);
    EXPECT_TRUE(IsDirectory(P("dir")) && IsRegular(P("file")));
    EXPECT_EQ(LinkFile(P("file"), P("hard")), 1);
    EXPECT_EQ(Rename(P("hard"), P("moved")), 1);
    EXPECT_EQ(Text(MapFileRead(P("moved"))), "x");
    EXPECT_EQ(RemoveFile(P("moved")), 1);
    EXPECT_EQ(RemoveFile(P("moved")), 0);
    EXPECT_EQ(RemoveDir(P("dir")), 1);
}

TEST_F(FileDir, MapFileReadAndWrite)
{
    std::string bytes("a\0b\xff\n", 5);
    Write("bytes", bytes);
    EXPECT_EQ(Text(MapFileRead(P("bytes"))), bytes);
    EXPECT_EQ(MapFileWrite(P("bytes"), "other"), 0);
    EXPECT_EQ(Text(MapFileRead(P("bytes"))), bytes);

    EXPECT_EQ(MapFileWrite(P("empty"), SString()), 1);
    SString empty = MapFileRead(P("empty"));
    EXPECT_TRUE(empty.Defined() && empty.Length() == 0);
    mkdir(P("dir").Data(), 0700);
    for (const SString& path : {P("dir"), P("missing"), SString(""), SString("/dev/null")})
        EXPECT_FALSE(MapFileRead(path).Defined()) << Text(path);
    EXPECT_EQ(MapFileWrite(P("missing/x"), "x"), 0);
}

TEST_F(FileDir, LocksAcrossProcesses)
{
    SString path = P("lock");
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    pid_t child = fork();
    if (child == 0) {
        int fd = open(path.Data(), O_RDWR | O_CREAT, 0600);
        int ok = fd >= 0 && flock(fd, LOCK_EX) == 0;
        (void)!write(ready[1], ok ? "1" : "0", 1);
        usleep(300000);
        _exit(0);
    }
    char c = 0;
    ASSERT_EQ(read(ready[0], &c, 1), 1);
    ASSERT_EQ(c, '1');

    double start = Seconds();
    EXPECT_EQ(LockFile(path, 0), -1);
    EXPECT_EQ(errno, EWOULDBLOCK);
    EXPECT_EQ(LockFile(path, LockShared), -1);
    EXPECT_LT(Seconds() - start, 0.2) << "a try must not wait";

    int fd = LockFile(path, LockWait);
    EXPECT_GE(fd, 0);
    EXPECT_GT(Seconds() - start, 0.2) << "a waiting lock waits for the holder";
    int other = open(path.Data(), O_RDONLY);
    EXPECT_EQ(LockFile(other, LockShared), -1) << "held exclusively through fd";
    EXPECT_EQ(UnlockFile(fd), 1);
    EXPECT_EQ(LockFile(other, LockShared), other);
    EXPECT_EQ(CloseFile(other), 1);
    EXPECT_EQ(CloseFile(fd), 1);
    EXPECT_EQ(CloseFile(fd), 0);
    waitpid(child, nullptr, 0);
    close(ready[0]);
    close(ready[1]);
}
