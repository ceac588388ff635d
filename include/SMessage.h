// The message spool: the files of a spooled message, and the requests with
// which the server's modules hand work to each other.
//
// A message is up to three files that share one message id (any text without
// "/"): a control file, id + "-Control", that tells the modules what to do
// with the message; a header file, id + "-Header"; and a body file,
// id + "-Body", whose bytes this library never reads or writes.  Control and
// header files are named lists (SNamedLists.h) stored in their text form.
//
//   SMessage   base of every spool file: the stored path and an error code
//   SBody      the body file (a path, nothing more)
//   SField     a file holding one named list: Read, and the atomic Write
//   SHeader    the header file, named root + "/messages/" + id + "-Header"
//   SControl   the control file, named root + "/control/" + id + "-Control",
//              with "Trace:", deferral, removal, hard links and the
//              dispatcher notice
//   SRequest   a control file used as a question to another module, and the
//              answer to it
//
// The directories come from the environment when an object is constructed:
// "Tarnwick" is the root, "ModuleName" the running module.  Paths are formed
// by plain concatenation (an unset variable contributes ""):
//   messages directory   root + "/messages/"
//   control directory    root + "/control/"
//   deferred directory   root + "/deferred/" + module + "/"
//
// Writing is atomic: the new text goes to the file name + ".temp" (which must
// not exist) and is then renamed over the old file, so a reader sees either
// the old file or the whole new one.  Readers take no locks.  Writers in one
// directory take turns through an flock on the directory, held only inside
// Write: since every writer of a file uses the same ".temp" name, two writers
// at once could otherwise remove or publish each other's unfinished file.  So
// two writers of one file both succeed and the later one wins.  No descriptor
// is held between calls; destroying an object never touches its files.
//
// The dispatcher notice and the answer are UDP datagrams on 127.0.0.1.  The
// notice goes to the port in "DispatchSocket" (read at every call) and holds
// four fields joined by "\n", with no line end after the last:
//   message id, first "Function:", first "Control-Type:", first "Priority:"
// The answer is the single byte "0", sent to the port that the asker wrote
// into "Return-Path:".
//
// Failure policy: every operation reports failure by returning 0 and nothing
// else; nothing is printed.  The error code of a spool file is 0 after every
// SField::Read() and -11 after a Write() without a file name; no other value
// is ever set here.
//
// Not thread-safe; processes share nothing but the files.
#ifndef TARNWICK_SMESSAGE_H
#define TARNWICK_SMESSAGE_H

#include "SNamedLists.h"
#include "SString.h"
#include "SStringList.h"

class SMessage {
public:
    // Error code of a Write() that found no file name.
    static constexpr int ErrNoFilename = -11;

    SMessage();
    virtual ~SMessage();

    // The stored path, undefined until one is stored.
    virtual SString GetFilename() const;
    // Stores s as it is (no directory, no suffix).
    virtual void PutFilename(const SString& s);

    // 0, or ErrNoFilename after a Write() without a file name.
    int ErrorCode() const { return _errorCode; }

protected:
    SString _filename;
    int _errorCode;
};

// The body file: only its path.  The caller writes and reads the bytes; the
// spool touches the file only by name (SControl::RemoveMessage, LinkMessage).
class SBody : public SMessage {
};

// A spool file whose contents are one named list, in its text form.  The
// list uses the default flags: case-sensitive keys, "\n" line ends.
class SField : public SMessage, public SNamedStringList {
public:
    SField();
    ~SField() override;

    // Reads the stored file into this list, replacing everything in it.
    // Resets the error code to 0 first.  0 when the file name is empty or the
    // file cannot be read (the list is then left as it was); an empty file is
    // read with success and leaves the list empty.
    virtual int Read();
    // Stores name as it is, then calls the virtual Read().
    virtual int Read(const SString& name);
    // Writes this list to the stored file name through name + ".temp" and a
    // rename.  0 with error code ErrNoFilename when no name is stored; 0 when
    // the temporary file cannot be created (a stale ".temp" counts) or the
    // rename fails, and then the old file is intact and the ".temp" removed.
    virtual int Write();
    // Stores name as it is, then calls the virtual Write().
    virtual int Write(const SString& name);
    // A hook for derived classes; does nothing here, since the spool holds
    // no lock between calls.
    virtual void UnlockFile();

protected:
    SString _messagesDir;
    // Left to the modules that build on the spool; the library neither reads
    // nor changes it.
    int _userData;
};

class SHeader : public SField {
public:
    // The message id: the path's last part with "-Header" removed.
    SString GetFilename() const override;
    // Stores messages directory + s + "-Header".  Intended: s is always taken
    // as an id, so a path given here is prefixed all the same.
    void PutFilename(const SString& s) override;
    int Read() override;
    // PutFilename(name), then SField::Read().
    int Read(const SString& name) override;
    int Write() override;
    // PutFilename(name), then SField::Write().
    int Write(const SString& name) override;
};

class SControl : public SField {
public:
    // Takes the directories and the module name from the environment.
    SControl();
    ~SControl() override;

    // The message id: the path's last part with "-Control" removed.
    SString GetFilename() const override;
    // An id (s without "/") is stored as control directory + s + "-Control";
    // anything with a "/" is taken as a complete path and stored unchanged.
    void PutFilename(const SString& s) override;
    int Read() override;
    // PutFilename(name), then the virtual Read().
    int Read(const SString& name) override;
    // Appends the module name to "Trace:" (always, even when it is already
    // there or undefined) and moves "Trace:" to the end, then writes as
    // SField::Write() does.  Every write therefore adds one trace entry,
    // also a write that fails.
    int Write() override;
    // PutFilename(name), then the virtual Write().
    int Write(const SString& name) override;

    // Sends the dispatcher notice for this file (see the top of this file);
    // 1 when the whole datagram was sent.  0 when "DispatchSocket", read as a
    // number and truncated, is not in 1..65536, or the socket or sendto
    // fails.  Intended: 65536 passes the check (it wraps to port 0 on the
    // wire), unlike in SRequest::Answer.  No retry, no acknowledgement.
    int Notify();
    // Moves the control file into deferred directory + first "Host-To:" +
    // "/" (no subdirectory without "Host-To:"), creating the directories with
    // mode 0770.  0, with the file left in place, when the directory cannot be
    // made or the rename fails.  The object keeps its old file name: store the
    // new path before writing it again.
    int Defer();
    // Removes messages directory + id + "-Header" and "-Body" and control
    // directory + id + "-Control", always trying all three.  1 when the
    // control file was removed and header and body either both were or both
    // were not; else 0.  Intended: a message that never had a header and a
    // body is removed with success, one that lost only one of them is not.
    // The stored path is not used: a deferred control file is not removed.
    int RemoveMessage();
    // Hard-links this message's header and body under newId in the messages
    // directory.  0 when either link fails; a failed body link removes the
    // new header link again.  No control file is made for newId.
    int LinkMessage(const SString& newId) const;

protected:
    SString _moduleName;
    SString _controlDir;
    SString _deferredDir;
};

// A control file used as a request.  The asking module fills it and calls
// Ask, which blocks until the answering module has rewritten the file and
// called Answer, or until the time-out.  A process must not ask twice within
// one UTC second: the request id is the time to the second and the process id.
class SRequest : public SControl {
public:
    // An empty request, directories from the environment.
    SRequest();
    // A request holding every key of c that has a value, under c's message id
    // in this process's control directory.
    explicit SRequest(const SControl& c);
    ~SRequest() override;

    // Sets "Function:" to function, "Control-Type:" to "Request", "Priority:"
    // to "3" unless it has a value, and "Return-Path:" to a fresh UDP port on
    // 127.0.0.1; writes the file under a new id (MessageIdDate() + "." +
    // ProcessIdString()), notifies the dispatcher and waits up to timeout
    // seconds (fractions allowed) for a one-byte answer.  Then rereads the
    // file as the other module left it.  1 when exactly one byte came and the
    // reread succeeded.  0 on any failure: time-out, a signal, an answer of
    // another length, a failed write, notice or reread; a negative timeout
    // fails at once, one above a day waits a day.  The wait uses select(), so
    // it also fails in a process whose descriptors reach FD_SETSIZE (1024 on
    // most systems).  Whatever the result,
    // no file of the request id is left in the spool.
    int Ask(const SString& function, double timeout);
    // Writes this file back (adding this module to "Trace:") and sends the
    // byte "0" to the port in "Return-Path:".  0 when the write fails; when
    // the port is not in 1..65535 (then the message is removed and the asker
    // times out); or when the datagram cannot be sent (the file stays).
    int Answer();
};

#endif
