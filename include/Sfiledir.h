// Files and directories: file tests, directory listing and creation, removal,
// renaming and linking, whole-file read and write through memory mapping,
// flock locks, file size and age, free disk space.
//
// Every path is an SString; an undefined path reaches the system as "".
// Failure policy: results are 1 on success and 0 on failure unless stated;
// nothing is printed, and errno is left as the system set it.
#ifndef TARNWICK_SFILEDIR_H
#define TARNWICK_SFILEDIR_H

#include "SString.h"
#include "SStringList.h"

// Lock modes of LockFile: a bit set.
enum {
    LockWait = 1,    // block until the lock is granted (else fail at once)
    LockShared = 2   // shared lock (else exclusive)
};

int FileExists(const SString& path);
int IsReadable(const SString& path);
int IsWriteable(const SString& path);
int IsExecutable(const SString& path);
// lstat-based: a symbolic link is neither.
int IsRegular(const SString& path);
int IsDirectory(const SString& path);
// Size of a regular file; -1 otherwise.
long FileSize(const SString& path);
// Age in days since the last modification; -1.0 when lstat fails.
double FileAge(const SString& path);
// Bytes available to an unprivileged user on the file system of path;
// -1.0 when statvfs fails.
double FreeDiskSpace(const SString& path);
// The resolved absolute path, or path unchanged when it cannot be resolved.
SString RealPath(const SString& path);
// Full paths of the entries, never "." or ".."; undefined on failure.
SStringList ReadDir(const SString& path);
int CreateDirectory(const SString& path, int mode);
// Creates the directory and its missing parents.
int MakeDir(const SString& path, int mode);
int RemoveDir(const SString& path);
int Chdir(const SString& path);
int RemoveFile(const SString& path);
int CloseFile(int fd);
int Rename(const SString& from, const SString& to);
int LinkFile(const SString& existing, const SString& newName);
// The whole file; undefined when it cannot be read.
SString MapFileRead(const SString& path);
// Creates a new file (never replaces one) holding text.
int MapFileWrite(const SString& path, const SString& text);
// flock-based; return the descriptor, or -1.
int LockFile(int fd, int mode, int = 0, int = 0);
int LockFile(const SString& path, int mode, int = 0, int = 0);
int UnlockFile(int fd, int = 0, int = 0);

#endif
