#include "Sfiledir.h"

#include <sys/time.h>

#include <cerrno>
#include <tuple>

#include "spool_fixture.h"
#include "text_helpers.h"

namespace {

// The private root of the spool tests, which already holds "control" and
// "messages", serves as the scratch directory.
using FileDir = SpoolTest;

TEST_F(FileDir, FileTestsAndRemovalSpareDirectories)
{
    ASSERT_EQ(MapFileWrite(P("file"), "12345") + CreateDirectory(P("dir"), 0700), 2);
    ASSERT_EQ(symlink("file", P("link").Data()), 0);
    // exists, regular, directory, size
    const std::pair<SString, std::tuple<int, int, int, long>> rows[] = {
        {P("file"), {1, 1, 0, 5}}, {P("dir"), {1, 0, 1, -1}}, {P("link"), {1, 0, 0, -1}},
        {P("missing"), {0, 0, 0, -1}}, {SString(), {0, 0, 0, -1}},
    };
    for (const auto& [path, expected] : rows)
        EXPECT_EQ(std::make_tuple(FileExists(path), IsRegular(path), IsDirectory(path), FileSize(path)), expected)
            << Str(path);
    struct timeval twoDaysAgo[2] = {{time(0) - 2 * 86400, 0}, {time(0) - 2 * 86400, 0}};
    ASSERT_EQ(utimes(P("file").Data(), twoDaysAgo), 0);
    EXPECT_NEAR(FileAge(P("file")), 2.0, 0.001);
    EXPECT_EQ(FileAge(P("missing")) + FreeDiskSpace(P("missing")), -2.0);
    EXPECT_EQ(Str(RealPath(P("dir/../link"))), Str(RealPath(P("file"))));
    EXPECT_EQ(Str(RealPath(P("missing"))), Str(P("missing")));

    EXPECT_EQ(RemoveFile(P("dir")) + RemoveDir(P("file")) + Chdir(P("file")), 0);
    EXPECT_EQ(LinkFile(P("dir"), P("l")), 0);
    EXPECT_EQ(LinkFile(P("file"), P("hard")) + Rename(P("hard"), P("moved")), 2);
    EXPECT_EQ(RemoveFile(P("moved")) + RemoveDir(P("dir")), 2);
}

TEST_F(FileDir, MakeDirAndReadDir)
{
    std::string cwd = std::filesystem::current_path();
    ASSERT_EQ(Chdir(root), 1);
    EXPECT_EQ(MakeDir("a/b/c/", 0770) + MakeDir("a/b/c/", 0770), 2);
    ASSERT_EQ(Chdir(cwd.c_str()), 1);
    EXPECT_TRUE(IsDirectory(P("a/b/c")));
    EXPECT_EQ(MakeDir(P("x//y"), 0770), 1);
    ASSERT_EQ(MapFileWrite(P("plain"), ""), 1);
    EXPECT_EQ(MakeDir(P("plain/sub"), 0770) + MakeDir("", 0770), 0);

    EXPECT_EQ(Str(ReadDir(root + "//a//").Join("|")), Str(P("a/b")));
    EXPECT_TRUE(ReadDir(P("a/b/c")).Defined() && ReadDir(P("a/b/c")).Count() == 0);
    EXPECT_FALSE(ReadDir(P("missing")).Defined() || ReadDir("").Defined());
}

TEST_F(FileDir, MapFileReadAndWrite)
{
    SString bytes("a\0b\xff\n", 5);
    ASSERT_EQ(MapFileWrite(P("bytes"), bytes), 1);
    EXPECT_EQ(MapFileWrite(P("bytes"), "other"), 0);
    EXPECT_EQ(Str(MapFileRead(P("bytes"))), Str(bytes));
    EXPECT_EQ(MapFileWrite(P("empty"), SString()), 1);
    SString empty = MapFileRead(P("empty"));
    EXPECT_TRUE(empty.Defined() && empty.Length() == 0);
    for (const SString& path : {root, P("missing"), SString(""), SString("/dev/null")})
        EXPECT_FALSE(MapFileRead(path).Defined()) << Str(path);
}

TEST_F(FileDir, LocksAcrossProcesses)
{
    int held = LockFile(P("lock"), 0);
    ASSERT_GE(held, 0);
    // Exit status bits: 1 both tries were refused, 2 the waiting lock was
    // granted.  A try that waited would be granted at the unlock below, and a
    // waiting lock that did not wait would be refused, so no clock is needed.
    pid_t child = Spawn([&] {
        bool refused = LockFile(P("lock"), 0) == -1 && errno == EWOULDBLOCK &&
                       LockFile(P("lock"), LockShared) == -1;
        return refused | 2 * (LockFile(P("lock"), LockWait | LockShared) >= 0);
    });
    usleep(500000);
    EXPECT_EQ(UnlockFile(held), 1);
    EXPECT_EQ(Status(child), 3);
    EXPECT_EQ(CloseFile(held), 1);
}

}  // namespace
