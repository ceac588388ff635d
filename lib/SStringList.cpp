// SStringList: the shared ring of items, copy-on-write, the Perl-like list
// operations, stream I/O and the 109 limit.  The pattern filter (Grep) lives
// in RegexFuncs.cpp.

#include "SStringList.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>
#include <vector>

namespace {

SStringListRep* NewRep(int flags)
{
    return new SStringListRep{nullptr, 0, 1, flags};
}

}  // namespace

// ---- representation ----------------------------------------------------

void SStringList::_Free()
{
    if (--_rep->_links == 0) {
        for (int i = _rep->_count; i > 0; i--)
            delete _rep->_root->_prev;  // unlinks itself from the ring
        delete _rep;
    }
}

// Unshares: this handle takes a new, defined representation holding the same
// strings (the strings themselves stay shared).
void SStringList::_MakeUnique()
{
    if (_rep->_links == 1)
        return;
    SStringList shared(*this);
    Reset();
    shared._Each([this](const SString& s) { _Push(s); });
}

void SStringList::_Push(const SString& s)
{
    _rep->_flags |= 1;
    if (_rep->_count + 1 > MaxItems)
        std::exit(109);
    SStringItem* item = new SStringItem(s);
    SStringItem* root = _rep->_root;
    if (!root) {
        _rep->_root = item;
    } else {
        item->_prev = root->_prev;
        item->_next = root;
        root->_prev->_next = item;
        root->_prev = item;
    }
    _rep->_count++;
}

// Item i, walking from whichever end is nearer; null when out of range.
SStringItem* SStringList::_FindItem(int i) const
{
    if (i < 0 || i >= _rep->_count)
        return nullptr;
    SStringItem* item = _rep->_root;
    if (i <= _rep->_count / 2) {
        while (i-- > 0)
            item = item->_next;
    } else {
        for (int back = _rep->_count - i; back > 0; back--)
            item = item->_prev;
    }
    return item;
}

// Deletes one item of this (unshared) list, moving the root off it.
void SStringList::_Unlink(SStringItem* item)
{
    if (item == _rep->_root)
        _rep->_root = _rep->_count == 1 ? nullptr : item->_next;
    delete item;
    _rep->_count--;
}

// ---- construction and assignment -----------------------------------------

SStringList::SStringList() : _rep(NewRep(0)) { }

SStringList::SStringList(const SStringList& l) : _rep(l._rep) { _rep->_links++; }

SStringList::SStringList(const SString& s) : _rep(NewRep(1)) { _Push(s); }

SStringList::SStringList(const char* s) : SStringList(SString(s)) { }

SStringList::SStringList(const char** texts) : _rep(NewRep(0))
{
    *this = texts;
}

SStringList::~SStringList() { _Free(); }

SStringList& SStringList::operator=(const SStringList& l)
{
    if (_rep != l._rep) {
        l._rep->_links++;
        _Free();
        _rep = l._rep;
    }
    return *this;
}

SStringList& SStringList::operator=(const SString& s)
{
    SString keep(s);  // s may be one of our own items
    Reset();
    _Push(keep);
    return *this;
}

SStringList& SStringList::operator=(const char* s) { return *this = SString(s); }

SStringList& SStringList::operator=(const char** texts)
{
    Reset();
    if (!texts) {
        _rep->_flags &= ~1;
        return *this;
    }
    for (; *texts; texts++)
        _Push(SString(*texts));
    return *this;
}

// ---- members -----------------------------------------------------------

void SStringList::Reset()
{
    if (_rep->_links != 1) {
        _rep->_links--;
        _rep = NewRep(1);
        return;
    }
    _Free();
    _rep = NewRep(1);
}

void SStringList::Undef()
{
    Reset();
    _rep->_flags &= ~1;
}

int SStringList::Push(const SString& s)
{
    SString keep(s);  // s may be one of our own items, and unsharing moves them
    _MakeUnique();
    _Push(keep);
    return Count();
}

int SStringList::Push(const char* s) { return Push(SString(s)); }

int SStringList::Push(const SStringList& l)
{
    SStringList source(l);  // pushing a list onto itself appends its items once
    _MakeUnique();
    if (source.Defined())
        _rep->_flags |= 1;
    source._Each([this](const SString& s) { _Push(s); });
    return Count();
}

SString SStringList::Pop()
{
    _MakeUnique();
    return Count() == 0 ? SString() : _Take(_rep->_root->_prev);
}

SString SStringList::Shift()
{
    _MakeUnique();
    return Count() == 0 ? SString() : _Take(_rep->_root);
}

// Removes one item of this (unshared) list and hands out its string.
SString SStringList::_Take(SStringItem* item)
{
    SString s = item->_string;
    _Unlink(item);
    return s;
}

SString SStringList::Get(int i) const
{
    if (i < 0)
        i += Count();
    SStringItem* item = _FindItem(i);
    return item ? item->_string : SString();
}

SString& SStringList::operator[](int i)
{
    _MakeUnique();
    if (i < 0)
        i += Count();
    if (i < 0) {
        static SString scratch;
        scratch = SString();
        return scratch;
    }
    while (i >= Count())
        _Push(SString());
    return _FindItem(i)->_string;
}

int SStringList::Index(const SString& s) const
{
    SStringItem* item = _rep->_root;
    for (int i = 0; i < Count(); i++, item = item->_next)
        if (item->_string == s)
            return i;
    return -1;
}

int SStringList::Index(const char* s) const { return Index(SString(s)); }
int SStringList::Contains(const SString& s) const { return Index(s) >= 0; }
int SStringList::Contains(const char* s) const { return Index(s) >= 0; }

int SStringList::Delete(int i)
{
    _MakeUnique();
    SStringItem* item = _FindItem(i);
    if (!item)
        return 0;
    _Unlink(item);
    return 1;
}

int SStringList::Delete(const SString& s)
{
    _MakeUnique();
    return Delete(Index(s));
}

int SStringList::Delete(const char* s) { return Delete(SString(s)); }

void SStringList::Insert(const SStringList& other, int pos)
{
    SStringList source(other);  // inserting a list into itself is safe
    if (Count() == 0) {
        *this = source;
        if (pos <= 0)
            return;
        // Unshare before adding, so that other is left as it was.
        _MakeUnique();
        int first = Count();
        for (int i = 0; i < pos; i++)
            _Push(SString());
        _rep->_root = _FindItem(first);
        return;
    }
    if (pos < 0 || pos > Count() || source.Count() == 0)
        return;
    _MakeUnique();
    if (pos == Count()) {
        Push(source);
        return;
    }
    // Appending to the ring rooted at item pos places the items just before
    // it; the root then goes back to whatever follows the former last item.
    SStringItem* formerLast = _rep->_root->_prev;
    _rep->_root = _FindItem(pos);
    source._Each([this](const SString& s) { _Push(s); });
    _rep->_root = formerLast->_next;
}

SStringList SStringList::Splice(int offset, int length)
{
    _MakeUnique();
    if (offset < 0 || length < 0 || length > Count() - offset || length == 0)
        return SStringList();
    if (length == Count()) {
        SStringList whole(*this);
        Reset();
        return whole;
    }
    SStringItem* first = _FindItem(offset);
    SStringItem* last = _FindItem(offset + length - 1);
    SStringItem* before = first->_prev;
    SStringItem* after = last->_next;
    before->_next = after;
    after->_prev = before;
    if (offset == 0)
        _rep->_root = after;
    _rep->_count -= length;
    last->_next = first;
    first->_prev = last;

    SStringList removed;  // deliberately left not defined
    removed._rep->_root = first;
    removed._rep->_count = length;
    return removed;
}

SStringList SStringList::Splice(int offset)
{
    if (Count() > 0 && offset < Count())
        return Splice(offset, Count() - offset);
    return SStringList();
}

SStringList SStringList::Splice(int offset, int length, const SStringList& replacement)
{
    SStringList removed = Splice(offset, length);
    Insert(replacement, offset);
    return removed;
}

SStringList SStringList::Slice(int from, int to) const
{
    SStringList slice;
    if (from < 0 || to < from || to >= Count())
        return slice;
    slice.Reset();
    SStringItem* item = _FindItem(from);
    for (int i = from; i <= to; i++, item = item->_next)
        slice._Push(item->_string);
    return slice;
}

SString SStringList::Join(const SString& separator) const
{
    if (Count() == 0)
        return Defined() ? SString("") : SString();
    SStringItem* item = _rep->_root;
    if (Count() == 1)
        return item->_string;

    long long total = static_cast<long long>(separator.Length()) * (Count() - 1) + Length(*this);
    if (total >= SString::AllocLimit)
        std::exit(108);
    SString joined;
    joined._Realloc(static_cast<int>(total));  // the one allocation
    char* out = joined._rep->_buf;
    bool first = true;
    _Each([&](const SString& s) {
        if (!first && separator.Length() > 0) {
            std::memcpy(out, separator.Data(), separator.Length());
            out += separator.Length();
        }
        if (s.Length() > 0) {
            std::memcpy(out, s.Data(), s.Length());
            out += s.Length();
        }
        first = false;
    });
    joined._rep->_len = static_cast<int>(total);
    return joined;
}

SString SStringList::Join() const { return Join(SString("")); }

SStringList& SStringList::Sort()
{
    _MakeUnique();
    if (Count() < 2)
        return *this;
    // Sort the representations and hand them back to the nodes in order: the
    // nodes keep their places and no link count changes.
    std::vector<SStringRep*> reps;
    reps.reserve(Count());
    _Each([&reps](const SString& s) { reps.push_back(s._rep); });
    std::sort(reps.begin(), reps.end(), [](const SStringRep* a, const SStringRep* b) {
        int n = std::min(a->_len, b->_len);
        int c = n > 0 ? std::memcmp(a->_buf, b->_buf, n) : 0;
        return c < 0 || (c == 0 && a->_len < b->_len);
    });
    SStringItem* item = _rep->_root;
    for (int i = 0; i < Count(); i++, item = item->_next)
        item->_string._rep = reps[i];
    return *this;
}

SStringList& SStringList::Reverse()
{
    _MakeUnique();
    SStringItem* front = _rep->_root;
    SStringItem* back = front ? front->_prev : nullptr;
    for (int i = Count() / 2; i > 0; i--) {
        std::swap(front->_string._rep, back->_string._rep);
        front = front->_next;
        back = back->_prev;
    }
    return *this;
}

SStringList& SStringList::Unique()
{
    _MakeUnique();
    if (Count() < 2)
        return *this;
    SStringItem* item = _rep->_root->_next;
    while (item != _rep->_root) {
        SStringItem* next = item->_next;
        if (item->_string == item->_prev->_string)
            _Unlink(item);
        item = next;
    }
    return *this;
}

char SStringList::Chop()
{
    char last = 0;
    _Each([&last](SString& s) { last = s.Chop(); });
    return last;
}

SStringList::operator char**() const
{
    if (!Defined())
        return nullptr;
    char** texts = new (std::nothrow) char*[Count() + 1];
    if (!texts)
        return nullptr;
    texts[Count()] = nullptr;
    if (Count() == 0)
        return texts;
    char* block = new (std::nothrow) char[Length(*this) + Count() + 1];
    if (!block) {
        delete[] texts;
        return nullptr;
    }
    char** next = texts;
    _Each([&](const SString& s) {
        *next++ = block;
        if (s.Length() > 0)
            std::memcpy(block, s.Data(), s.Length());
        block[s.Length()] = 0;
        block += s.Length() + 1;
    });
    return texts;
}

void SStringList::Debug(int level) const
{
    std::ostream& out = std::cerr;
    if (!Defined()) {
        out << "Undefined" << std::endl;
        return;
    }
    out << "Number of Links: " << _rep->_links << std::endl
        << "Number of Items: " << _rep->_count << std::endl
        << "Root node:       " << static_cast<const void*>(_rep->_root) << std::endl
        << "Flags:           " << _rep->_flags << std::endl;
    if (level == 0)
        return;
    SStringItem* item = _rep->_root;
    for (int i = 0; i < Count(); i++, item = item->_next) {
        item->Debug(level);
        out << std::endl;
    }
}

// ---- free functions ----------------------------------------------------

int Length(const SStringList& l)
{
    long long total = 0;
    l._Each([&total](const SString& s) { total += s.Length(); });
    return static_cast<int>(std::min<long long>(total, 0x7fffffff));
}

SStringList BaseName(const SStringList& l, const SString& suffix)
{
    return l._Map([&suffix](const SString& s) { return BaseName(s, suffix); });
}

SStringList LowerCase(const SStringList& l)
{
    return l._Map([](SString s) { return s.LowerCase(); });
}

SStringList UpperCase(const SStringList& l)
{
    return l._Map([](SString s) { return s.UpperCase(); });
}

std::ostream& operator<<(std::ostream& os, SStringList l)
{
    l._Each([&os](const SString& s) { s.Write(os); });
    return os;
}

std::istream& operator>>(std::istream& is, SStringList& l)
{
    l.Reset();
    SString line;
    for (line.ReadLine(is); line.Length() > 0; line.ReadLine(is))
        l.Push(line);
    return is;
}
