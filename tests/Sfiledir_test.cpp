#include "Sfiledir.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
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
};

std::string Text(const SString& s)
{
    return s.Defined() ? std::string(s.Data(), s.Length()) : "(undefined)";
}

}  // namespace

TEST_F(FileDir, FileTestsSizeAgeAndSpace)
{
    ASSERT_EQ(MapFileWrite(P("file"), "12345"), 1);
    ASSERT_EQ(CreateDirectory(P("dir"), 0700), 1);
    ASSERT_EQ(symlink("file", P("link").Data()), 0);
    struct { SString path; int exists, regular, directory; long size; } rows[] = {
        {P("file"), 1, 1, 0, 5}, {P("dir"), 1, 0, 1, -1}, {P("link"), 1, 0, 0, -1},
        {P("missing"), 0, 0, 0, -1}, {SString(), 0, 0, 0, -1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FileExists(row.path), row.exists) << Text(row.path);
        EXPECT_EQ(IsRegular(row.path) + 2 * IsDirectory(row.path), row.regular + 2 * row.directory) << Text(row.path);
        EXPECT_EQ(FileSize(row.path), row.size) << Text(row.path);
    }
    EXPECT_TRUE(IsReadable(P("file")) && IsWriteable(P("file")) && !IsExecutable(P("file")));
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
    std::string cwd = std::filesystem::current_path();
    ASSERT_EQ(Chdir(SString(dir.c_str())), 1);
    EXPECT_EQ(MakeDir("a/b/c/", 0770), 1);
    EXPECT_EQ(MakeDir("a/b/c/", 0770), 1);
    ASSERT_EQ(Chdir(cwd.c_str()), 1);
    EXPECT_TRUE(IsDirectory(P("a/b/c")));
    EXPECT_EQ(MakeDir(P("x//y"), 0770), 1);
    ASSERT_EQ(MapFileWrite(P("plain"), ""), 1);
    EXPECT_EQ(MakeDir(P("plain/sub"), 0770), 0);
    EXPECT_EQ(MakeDir("", 0770), 0);

    EXPECT_EQ(Text(ReadDir(SString((dir + "//a//").c_str())).Join("|")), dir + "/a/b");
    EXPECT_EQ(Text(ReadDir(SString(dir.c_str())).Sort().Join("|")), dir + "/a|" + dir + "/plain|" + dir + "/x");
    SStringList empty = ReadDir(P("a/b/c"));
    EXPECT_TRUE(empty.Defined() && empty.Count() == 0);
    EXPECT_FALSE(ReadDir(P("missing")).Defined() || ReadDir("").Defined());
}

TEST_F(FileDir, RemoveRenameAndLinkSpareDirectories)
{
    ASSERT_EQ(MapFileWrite(P("file"), "x"), 1);
    ASSERT_EQ(CreateDirectory(P("dir"), 0700), 1);
    EXPECT_EQ(RemoveFile(P("dir")) + RemoveDir(P("file")) + Chdir(P("file")) + LinkFile(P("dir"), P("l")), 0);
    EXPECT_EQ(LinkFile(P("file"), P("hard")) + Rename(P("hard"), P("moved")), 2);
    EXPECT_EQ(Text(MapFileRead(P("moved"))), "x");
    EXPECT_EQ(RemoveFile(P("moved")) + RemoveDir(P("dir")), 2);
    EXPECT_EQ(RemoveFile(P("moved")), 0);
}

TEST_F(FileDir, MapFileReadAndWrite)
{
    SString bytes("a\0b\xff\n", 5);
    ASSERT_EQ(MapFileWrite(P("bytes"), bytes), 1);
    EXPECT_EQ(MapFileWrite(P("bytes"), "other"), 0);
    EXPECT_EQ(Text(MapFileRead(P("bytes"))), Text(bytes));
    EXPECT_EQ(MapFileWrite(P("empty"), SString()), 1);
    SString empty = MapFileRead(P("empty"));
    EXPECT_TRUE(empty.Defined() && empty.Length() == 0);
    for (const SString& path : {SString(dir.c_str()), P("missing"), SString(""), SString("/dev/null")})
        EXPECT_FALSE(MapFileRead(path).Defined()) << Text(path);
}

TEST_F(FileDir, LocksAcrossProcesses)
{
    SString path = P("lock");
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    pid_t child = fork();
    if (child == 0) {
        int fd = open(path.Data(), O_RDWR | O_CREAT, 0600);
        (void)!write(ready[1], fd >= 0 && flock(fd, LOCK_EX) == 0 ? "1" : "0", 1);
        usleep(300000);
        _exit(0);
    }
    char c = 0;
    ASSERT_TRUE(read(ready[0], &c, 1) == 1 && c == '1');
    auto start = std::chrono::steady_clock::now();
    auto elapsed = [&] { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); };
    EXPECT_EQ(LockFile(path, 0), -1);
    EXPECT_EQ(errno, EWOULDBLOCK);
    EXPECT_EQ(LockFile(path, LockShared), -1);
    EXPECT_LT(elapsed(), 0.2) << "a try must not wait";

    int fd = LockFile(path, LockWait);
    EXPECT_GT(elapsed(), 0.2) << "a waiting lock waits for the holder";
    int other = open(path.Data(), O_RDONLY);
    EXPECT_EQ(LockFile(other, LockShared), -1);
    EXPECT_EQ(UnlockFile(fd), 1);
    EXPECT_EQ(LockFile(other, LockShared), other);
    EXPECT_EQ(CloseFile(other) + CloseFile(fd), 2);
    EXPECT_EQ(CloseFile(fd), 0);
    waitpid(child, nullptr, 0);
    close(ready[0]);
    close(ready[1]);
}
