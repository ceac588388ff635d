// The message spool: spool file names, atomic replacement of control and
// header files, deferral, removal and linking of messages, the dispatcher
// notice, and requests between modules over UDP on 127.0.0.1.
#include "SMessage.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Sdatetime.h"
#include "Sfiledir.h"
#include "Sprocess.h"

namespace {

const char* const LocalHost = "127.0.0.1";
const int DeferMode = 0770;
// select() refuses longer waits on some systems; a day is plenty for a request.
const double MaxWaitSeconds = 86400.0;

SString RootDir()
{
    return GetEnv("Tarnwick");
}

// The first value of key in map; undefined when the key is absent or empty.
SString FirstValue(const SNamedStringList& map, const char* key)
{
    return map.Get(key).Get(0);
}

// text read as a number (SString's float conversion) and truncated toward
// zero; 0 unless the result lies in 1..max.
int PortNumber(const SString& text, int max)
{
    float f = text;
    if (!(f >= 1.0f && f < max + 1.0f))
        return 0;
    return static_cast<int>(f);
}

// Takes the writers' turn in the directory that holds path: an exclusive
// flock on the directory itself, released by closing the descriptor.  -1 when
// the directory cannot be opened (the write that follows fails anyway).
int TakeWriterTurn(const SString& path)
{
    int slash = path.RIndex('/');
    SString dir = slash < 0 ? SString(".") : path.Segment(0, slash + 1);
    int fd = open(dir.Data(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0 && LockFile(fd, LockWait) < 0) {
        close(fd);
        return -1;
    }
    return fd;
}

sockaddr_in LocalAddress(int port)
{
    sockaddr_in addr = sockaddr_in();
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = inet_addr(LocalHost);
    // A port of 65536 is kept in 16 bits, as 0.
    addr.sin_port = htons(static_cast<uint16_t>(port));
    return addr;
}

// Sends len bytes in one datagram to 127.0.0.1 at port, on a socket of its
// own; 1 when all of them went out.
int SendDatagram(int port, const char* data, int len)
{
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    if (fd < 0)
        return 0;
    sockaddr_in to = LocalAddress(port);
    ssize_t sent = sendto(fd, data, len, 0, reinterpret_cast<sockaddr*>(&to), sizeof to);
    close(fd);
    return sent == len;
}

// A datagram socket bound to 127.0.0.1 at a port the system picks; the
// descriptor and the port, or -1.
int OpenReplySocket(int* port)
{
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    if (fd < 0)
        return -1;
    sockaddr_in addr = LocalAddress(0);
    socklen_t len = sizeof addr;
    if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0
        || getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
        close(fd);
        return -1;
    }
    *port = ntohs(addr.sin_port);
    return fd;
}

// Waits up to timeout seconds for one datagram on fd; 1 when it holds
// exactly one byte.  A time-out, an error or an interrupting signal is 0.
// Waits longer than MaxWaitSeconds are cut to it.
int AwaitOneByte(int fd, double timeout)
{
    // A negative time limit is what select() refuses; a descriptor beyond
    // FD_SETSIZE is one that it cannot watch.
    if (!(timeout >= 0) || fd >= FD_SETSIZE)
        return 0;
    if (timeout > MaxWaitSeconds)
        timeout = MaxWaitSeconds;
    timeval tv;
    tv.tv_sec = static_cast<long>(timeout);
    double usec = (timeout - tv.tv_sec) * 1000000.0;
    tv.tv_usec = usec > 1000000.0 ? 999999 : static_cast<long>(usec);
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(fd, &readable);
    if (select(fd + 1, &readable, 0, 0, &tv) <= 0)
        return 0;
    char buf[5];
    return recvfrom(fd, buf, sizeof buf, 0, 0, 0) == 1;
}

}  // namespace

// ---- SMessage -------------------------------------------------------------

SMessage::SMessage()
    : _errorCode(0)
{
}

SMessage::~SMessage()
{
}

SString SMessage::GetFilename() const
{
    return _filename;
}

void SMessage::PutFilename(const SString& s)
{
    _filename = s;
}

// ---- SField ---------------------------------------------------------------

SField::SField()
    : _messagesDir(RootDir() + "/messages/"), _userData(0)
{
}

SField::~SField()
{
}

int SField::Read()
{
    _errorCode = 0;
    if (_filename.Length() == 0)
        return 0;
    SString text = MapFileRead(_filename);
    if (!text.Defined())
        return 0;
    text >> *this;
    return 1;
}

int SField::Read(const SString& name)
{
    _filename = name;
    return Read();
}

int SField::Write()
{
    if (_filename.Length() == 0) {
        _errorCode = ErrNoFilename;
        return 0;
    }
    SString temp = _filename + ".temp";
    SString text("");
    text << *this;
    // Every writer of this file uses the same ".temp" name, so writers take
    // turns: otherwise one could remove, or rename into place, another's
    // unfinished temporary file.  A ".temp" found during our turn is stale.
    int turn = TakeWriterTurn(_filename);
    int written = MapFileWrite(temp, text) && Rename(temp, _filename);
    if (!written)
        RemoveFile(temp);
    if (turn >= 0)
        close(turn);
    return written;
}

int SField::Write(const SString& name)
{
    _filename = name;
    return Write();
}

void SField::UnlockFile()
{
}

// ---- SHeader --------------------------------------------------------------

SString SHeader::GetFilename() const
{
    return BaseName(_filename, "-Header");
}

void SHeader::PutFilename(const SString& s)
{
    _filename = _messagesDir + s + "-Header";
}

int SHeader::Read()
{
    return SField::Read();
}

int SHeader::Read(const SString& name)
{
    PutFilename(name);
    return SField::Read();
}

int SHeader::Write()
{
    return SField::Write();
}

int SHeader::Write(const SString& name)
{
    PutFilename(name);
    return SField::Write();
}

// ---- SControl -------------------------------------------------------------

SControl::SControl()
    : _moduleName(GetEnv("ModuleName")),
      _controlDir(RootDir() + "/control/"),
      _deferredDir(RootDir() + "/deferred/" + _moduleName + "/")
{
}

SControl::~SControl()
{
}

SString SControl::GetFilename() const
{
    return BaseName(_filename, "-Control");
}

void SControl::PutFilename(const SString& s)
{
    if (s.Index('/') < 0)
        _filename = _controlDir + s + "-Control";
    else
        _filename = s;
}

int SControl::Read()
{
    return SField::Read();
}

int SControl::Read(const SString& name)
{
    PutFilename(name);
    return Read();
}

int SControl::Write()
{
    SStringList trace = Get("Trace:");
    trace.Push(_moduleName);
    // Deleting first makes "Trace:" the last key of every written file.
    Delete("Trace:");
    (*this)["Trace:"] = trace;
    return SField::Write();
}

int SControl::Write(const SString& name)
{
    PutFilename(name);
    return Write();
}

int SControl::Notify()
{
    int port = PortNumber(GetEnv("DispatchSocket"), 65536);
    if (port == 0)
        return 0;
    SString notice = GetFilename() + "\n" + FirstValue(*this, "Function:") + "\n"
        + FirstValue(*this, "Control-Type:") + "\n" + FirstValue(*this, "Priority:");
    return SendDatagram(port, notice.Data(), notice.Length());
}

int SControl::Defer()
{
    SString sub = FirstValue(*this, "Host-To:");
    if (sub.Length() > 0)
        sub += "/";
    SString dir = _deferredDir + sub;
    if (!MakeDir(dir, DeferMode))
        return 0;
    return Rename(_filename, dir + GetFilename() + "-Control");
}

int SControl::RemoveMessage()
{
    SString id = GetFilename();
    int header = RemoveFile(_messagesDir + id + "-Header");
    int body = RemoveFile(_messagesDir + id + "-Body");
    int control = RemoveFile(_controlDir + id + "-Control");
    return control && (header != 0) == (body != 0);
}

int SControl::LinkMessage(const SString& newId) const
{
    SString id = GetFilename();
    SString newHeader = _messagesDir + newId + "-Header";
    if (!LinkFile(_messagesDir + id + "-Header", newHeader))
        return 0;
    if (!LinkFile(_messagesDir + id + "-Body", _messagesDir + newId + "-Body")) {
        RemoveFile(newHeader);
        return 0;
    }
    return 1;
}

// ---- SRequest -------------------------------------------------------------

SRequest::SRequest()
{
}

SRequest::SRequest(const SControl& c)
{
    Reset();
    PutFilename(c.GetFilename());
    SStringList keys = c.Keys();
    for (int i = 0; i < keys.Count(); i++)
        (*this)[keys.Get(i)] = c.Get(keys.Get(i));
}

SRequest::~SRequest()
{
}

int SRequest::Ask(const SString& function, double timeout)
{
    (*this)["Function:"] = SStringList(function);
    (*this)["Control-Type:"] = SStringList("Request");
    if (Get("Priority:").Count() == 0)
        (*this)["Priority:"] = SStringList("3");
    PutFilename(MessageIdDate() + "." + ProcessIdString());

    int port = 0;
    int fd = OpenReplySocket(&port);
    if (fd < 0)
        return 0;
    (*this)["Return-Path:"] = SStringList(SString(port));
    if (!Write()) {
        close(fd);
        return 0;
    }
    int answered = Notify() && AwaitOneByte(fd, timeout);
    close(fd);
    // After an answer the file holds what the answering module wrote back.
    // The request's files go in every case.
    int reread = answered && Read();
    RemoveMessage();
    return reread;
}

int SRequest::Answer()
{
    if (!Write())
        return 0;
    int port = PortNumber(FirstValue(*this, "Return-Path:"), 65535);
    if (port == 0) {
        RemoveMessage();
        return 0;
    }
    return SendDatagram(port, "0", 1);
}
