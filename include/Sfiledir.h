// Files and directories: the file-system wrappers that the spool, the
// hash-file store and the pattern module's file tests are built on.
//
// The pieces: file tests (access and lstat), size, age and free space;
// directory listing and creation; removal, renaming and linking; reading a
// whole file and writing a new one through memory mapping; flock locks.
// Paths are SString values handed to the system as NUL-terminated text: an
// undefined path reaches the system as "", and a path holding a NUL byte is
// cut there.
//
// Failure policy: results are 1 on success and 0 on failure unless stated;
// nothing is printed, nothing throws, and errno is left as the system set it.
// The functions own nothing beyond the call, except LockFile(path, ...),
// whose descriptor the caller closes (closing it releases the lock).
#ifndef TARNWICK_SFILEDIR_H
#define TARNWICK_SFILEDIR_H

#include "SString.h"
#include "SStringList.h"

// Lock modes of LockFile, a bit set: 0 is an exclusive try, LockWait a
// waiting exclusive lock, LockShared a shared try, LockWait | LockShared a
// waiting shared lock.
enum {
    LockWait = 1,    // block until the lock is granted (else fail at once)
    LockShared = 2   // shared lock (else exclusive)
};

// access(path, F_OK / R_OK / W_OK / X_OK) succeeds, for the real user.
int FileExists(const SString& path);
int IsReadable(const SString& path);
int IsWriteable(const SString& path);
int IsExecutable(const SString& path);
// lstat succeeds and the entry itself is a regular file / a directory; a
// symbolic link is neither, whatever it points to.
int IsRegular(const SString& path);
int IsDirectory(const SString& path);

// Size in bytes of a regular file (lstat, so a link is not followed); -1 for
// anything else and when lstat fails.
long FileSize(const SString& path);
// Days (with fraction) since the last modification; negative for a time in
// the future; -1.0 when lstat fails.
double FileAge(const SString& path);
// Bytes available to an unprivileged user on the file system holding path,
// f_bavail * f_frsize computed in double; -1.0 when statvfs fails.
double FreeDiskSpace(const SString& path);
// The absolute path with links, "." and ".." resolved (realpath); path
// itself, unchanged, when it cannot be resolved (a missing file included).
SString RealPath(const SString& path);

// Full paths of the entries of a directory, in the order the system gives
// them, never "." or "..".  Each is path + "/" + name with every run of
// slashes in that prefix made one: ReadDir("/tmp//x/") lists "/tmp/x/a".
// A defined empty list for an empty directory; an undefined list for an
// empty path or a directory that cannot be opened.
SStringList ReadDir(const SString& path);

// mkdir(path, mode), no parents; the process umask applies.
int CreateDirectory(const SString& path, int mode);
// Creates path and its missing parents; 1 when path is a directory at the
// end (at once when it already was one), 0 for an empty path or when a
// component cannot be created.  An existing component is passed over whatever
// its type, so a plain file on the way makes the result 0.  Directories
// created before a failure stay.
int MakeDir(const SString& path, int mode);
// 0 unless path is a directory (not a link to one); then rmdir succeeds.
int RemoveDir(const SString& path);
// 0 unless path is a directory (not a link to one); then chdir succeeds.
int Chdir(const SString& path);
// 0 for a directory, which is never unlinked; otherwise unlink succeeds.
int RemoveFile(const SString& path);
// close(fd) returns 0.
int CloseFile(int fd);
// rename(from, to) succeeds; replaces an existing to atomically.
int Rename(const SString& from, const SString& to);
// Hard link newName to existing; 0 when existing is a directory.
int LinkFile(const SString& existing, const SString& newName);

// The whole content of a regular file, NUL bytes kept; a defined empty
// string for an empty file; an undefined string for an empty path, a file
// that cannot be opened, or anything but a regular file (a directory, a
// device).  The file is read through a read-only shared mapping that is
// released before the return.  A file of 20,000,001 bytes or more ends the
// process with status 108, as any string of that size does.
SString MapFileRead(const SString& path);
// Creates path (O_EXCL, permission 0660 less the umask) holding exactly the
// bytes of text.  An existing path is never touched: the result is 0 and
// that file keeps its content.  An empty or undefined text creates an empty
// file and gives 1.  When the size change or the mapping fails, the new file
// is removed and the result is 0.
int MapFileWrite(const SString& path, const SString& text);

// flock on fd with a LockWait / LockShared mode; returns fd, or -1 when the
// lock is not granted (a try that meets a conflicting lock fails at once with
// EWOULDBLOCK).  A signal ends a wait with -1 and EINTR, so an alarm can
// bound it: intended.  The two trailing ints are accepted and not used.  The
// lock covers the whole file and goes with the open file description: it is
// released by UnlockFile or by closing the last descriptor on it.
int LockFile(int fd, int mode, int = 0, int = 0);
// Opens path (O_RDWR | O_CREAT, permission 0600) and locks it as above.
// Returns the new descriptor, which the caller owns; -1 when the open or
// the lock fails (the descriptor is then closed).
int LockFile(const SString& path, int mode, int = 0, int = 0);
// flock(fd, LOCK_UN) succeeds; the descriptor stays open.
int UnlockFile(int fd, int = 0, int = 0);

#endif
