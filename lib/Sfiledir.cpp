// Files and directories: thin wrappers over the POSIX file calls, each
// reporting 1/0 (or the value its header names) and leaving errno alone.

#include "Sfiledir.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <time.h>
#include <unistd.h>

namespace {

// The text the system sees for a path: "" for an undefined one.
const char* SysPath(const SString& path)
{
    return path.Defined() ? path.Data() : "";
}

int Access(const SString& path, int how)
{
    return access(SysPath(path), how) == 0;
}

// lstat's file type, or 0 when lstat fails.
mode_t FileType(const SString& path)
{
    struct stat st;
    if (lstat(SysPath(path), &st) != 0)
        return 0;
    return st.st_mode & S_IFMT;
}

// path with every run of two or more slashes made one.
SString CollapseSlashes(const SString& path)
{
    SString out("");
    const char* p = path.Data();
    for (int i = 0; i < path.Length(); i++) {
        if (p[i] != '/' || i == 0 || p[i - 1] != '/')
            out += p[i];
    }
    return out;
}

int IsDotEntry(const char* name)
{
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

// The next entry, retrying a read that a signal interrupted; null at the
// end or on any other error.
struct dirent* NextEntry(DIR* dir)
{
    for (;;) {
        errno = 0;
        struct dirent* entry = readdir(dir);
        if (entry || errno != EINTR)
            return entry;
    }
}

int FlockOperation(int mode)
{
    int op = (mode & LockShared) ? LOCK_SH : LOCK_EX;
    return (mode & LockWait) ? op : op | LOCK_NB;
}

// Closes fd, then unlinks path if given, keeping the errno of the failure
// that led here.
int Abandon(int fd, const char* path)
{
    int saved = errno;
    close(fd);
    if (path)
        unlink(path);
    errno = saved;
    return 0;
}

}  // namespace

int FileExists(const SString& path) { return Access(path, F_OK); }
int IsReadable(const SString& path) { return Access(path, R_OK); }
int IsWriteable(const SString& path) { return Access(path, W_OK); }
int IsExecutable(const SString& path) { return Access(path, X_OK); }
int IsRegular(const SString& path) { return FileType(path) == S_IFREG; }
int IsDirectory(const SString& path) { return FileType(path) == S_IFDIR; }

long FileSize(const SString& path)
{
    struct stat st;
    if (lstat(SysPath(path), &st) != 0 || !S_ISREG(st.st_mode))
        return -1;
    return st.st_size;
}

double FileAge(const SString& path)
{
    struct stat st;
    if (lstat(SysPath(path), &st) != 0)
        return -1.0;
    return difftime(time(0), st.st_mtime) / 86400.0;
}

double FreeDiskSpace(const SString& path)
{
    struct statvfs fs;
    if (statvfs(SysPath(path), &fs) != 0)
        return -1.0;
    return (double)fs.f_bavail * (double)fs.f_frsize;
}

SString RealPath(const SString& path)
{
    char* resolved = realpath(SysPath(path), 0);
    if (!resolved)
        return path;
    SString result(resolved);
    free(resolved);
    return result;
}

SStringList ReadDir(const SString& path)
{
    SStringList list;
    if (path.Length() == 0)
        return list;
    DIR* dir = opendir(SysPath(path));
    if (!dir)
        return list;
    list.Reset();
    SString prefix = CollapseSlashes(path + "/");
    while (struct dirent* entry = NextEntry(dir)) {
        if (!IsDotEntry(entry->d_name))
            list.Push(prefix + static_cast<const char*>(entry->d_name));
    }
    closedir(dir);
    return list;
}

int CreateDirectory(const SString& path, int mode)
{
    return mkdir(SysPath(path), mode) == 0;
}

int MakeDir(const SString& path, int mode)
{
    if (path.Length() == 0)
        return 0;
    if (IsDirectory(path))
        return 1;
    SStringList parts = path.SplitExact("/", 0);
    if (path[-1] == '/')
        parts.Pop();
    SString current(".");
    if (parts.Get(0).Length() == 0) {
        parts.Shift();
        current = "";
    }
    for (int i = 0; i < parts.Count(); i++) {
        current += "/" + parts.Get(i);
        if (!FileExists(current) && !CreateDirectory(current, mode))
            return 0;
    }
    return IsDirectory(path);
}

int RemoveDir(const SString& path)
{
    return IsDirectory(path) && rmdir(SysPath(path)) == 0;
}

int Chdir(const SString& path)
{
    return IsDirectory(path) && chdir(SysPath(path)) == 0;
}

int RemoveFile(const SString& path)
{
    return !IsDirectory(path) && unlink(SysPath(path)) == 0;
}

int CloseFile(int fd)
{
    return close(fd) == 0;
}

int Rename(const SString& from, const SString& to)
{
    return rename(SysPath(from), SysPath(to)) == 0;
}

int LinkFile(const SString& existing, const SString& newName)
{
    return !IsDirectory(existing) && link(SysPath(existing), SysPath(newName)) == 0;
}

SString MapFileRead(const SString& path)
{
    if (path.Length() == 0)
        return SString();
    int fd = open(SysPath(path), O_RDONLY);
    if (fd < 0)
        return SString();
    struct stat st;
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        Abandon(fd, 0);
        return SString();
    }
    if (st.st_size == 0) {
        close(fd);
        return SString("");
    }
    // Anything past INT_MAX is far over the string limit, which the
    // SString constructor enforces by ending the process.
    int size = st.st_size > INT_MAX ? INT_MAX : (int)st.st_size;
    void* map = mmap(0, size, PROT_READ, MAP_SHARED, fd, 0);
    if (map == MAP_FAILED) {
        Abandon(fd, 0);
        return SString();
    }
    SString content((const char*)map, size);
    munmap(map, size);
    close(fd);
    return content;
}

int MapFileWrite(const SString& path, const SString& text)
{
    const char* name = SysPath(path);
    int fd = open(name, O_RDWR | O_CREAT | O_EXCL, 0660);
    if (fd < 0)
        return 0;
    int size = text.Length();
    if (size == 0) {
        close(fd);
        return 1;
    }
    if (ftruncate(fd, size) != 0)
        return Abandon(fd, name);
    void* map = mmap(0, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (map == MAP_FAILED)
        return Abandon(fd, name);
    memcpy(map, text.Data(), size);
    munmap(map, size);
    close(fd);
    return 1;
}

int LockFile(int fd, int mode, int, int)
{
    return flock(fd, FlockOperation(mode)) == 0 ? fd : -1;
}

int LockFile(const SString& path, int mode, int, int)
{
    int fd = open(SysPath(path), O_RDWR | O_CREAT, 0600);
    if (fd < 0)
        return -1;
    if (LockFile(fd, mode) < 0) {
        Abandon(fd, 0);
        return -1;
    }
    return fd;
}

int UnlockFile(int fd, int, int)
{
    return flock(fd, LOCK_UN) == 0;
}
