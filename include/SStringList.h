// SStringList: the list of SString values, and SStringItem, its node.
//
// Like SString, a list is a handle onto a shared, reference-counted
// representation with copy-on-write: copying shares, and every member that
// changes the list first makes the representation unique with _MakeUnique.
// Unsharing copies the item handles only; the strings themselves stay shared
// until one of them is changed.
//
// Items form a circular doubly linked ring starting at the root: the root's
// previous item is the last one.  Item i is reached by walking from whichever
// end is nearer.
//
// A list is either defined (possibly with no items) or undefined; a lookup
// that finds nothing returns an undefined list.
//
// Failure policy: no member reports an error; out-of-range positions give an
// undefined string or list, 0 or -1, as documented below.  The one hard limit
// is the number of items: appending the 100,001st item ends the process with
// exit status 109 (no message).
//
// Not thread-safe: link counts are plain ints, by design.
#ifndef TARNWICK_SSTRINGLIST_H
#define TARNWICK_SSTRINGLIST_H

#include <iosfwd>

#include "SString.h"

class SRegex;

// One node of the ring.  The string comes first, so that a pointer to the item
// is also a reference to its string.  Deleting an item unlinks it from its
// neighbours and then releases its string.
class SStringItem {
public:
    explicit SStringItem(const SString& s);  // a lone item: linked to itself
    ~SStringItem();
    SStringItem(const SStringItem&) = delete;
    SStringItem& operator=(const SStringItem&) = delete;

    // Level 0: the escaped contents; 1: the ring addresses and the contents
    // in quotes; 2 and more: the addresses and SString::Debug(level).
    void Debug(int level) const;

protected:
    SString _string;
    SStringItem* _next;
    SStringItem* _prev;

    friend class SStringList;
};

// The shared list representation; bit 0 of _flags means defined.
struct SStringListRep {
    SStringItem* _root;
    int _count;
    int _links;
    int _flags;
};

class SStringList {
public:
    static const int MaxItems = 100000;

    SStringList();                      // undefined, no items
    SStringList(const SStringList& l);  // shares l
    SStringList(const SString& s);      // defined, one item
    SStringList(const char* s);         // defined, one item ("" for null)
    SStringList(const char** texts);    // null-terminated array; null gives undefined
    ~SStringList();

    // Assignment from a list shares; the other forms Reset and fill (a null
    // array leaves the list undefined).
    SStringList& operator=(const SStringList& l);
    SStringList& operator=(const SString& s);
    SStringList& operator=(const char* s);
    SStringList& operator=(const char** texts);

    int Defined() const { return _rep->_flags & 1; }
    int Count() const { return _rep->_count; }

    // Reset: defined and empty (a shared list takes a new representation and
    // leaves the others alone).  Undef: Reset, then undefined.
    void Reset();
    void Undef();

    // Append and return the new number of items; the list becomes defined.
    // Appending a list to itself appends its items once.
    int Push(const SString& s);
    int Push(const char* s);
    int Push(const SStringList& l);
    // Remove and return the last / first item; undefined when empty.
    SString Pop();
    SString Shift();

    // A copy of item i (negative counts from the end); undefined when out of
    // range.
    SString Get(int i) const;
    // A writable reference to item i (negative counts from the end).  Writing
    // past the end grows the list with undefined strings in between.  An
    // index still negative after adding the count refers to a scratch string
    // that belongs to no list.  The reference is valid until the list is next
    // changed or unshared.
    SString& operator[](int i);

    // Position of the first item equal to s, or -1.
    int Index(const SString& s) const;
    int Index(const char* s) const;
    int Contains(const SString& s) const;
    int Contains(const char* s) const;

    // Remove item i (no counting from the end) or the first item equal to s;
    // 1 on success, 0 when there is nothing to remove.
    int Delete(int i);
    int Delete(const SString& s);
    int Delete(const char* s);

    // Copies of other's items before item pos (pos == count appends; outside
    // 0..count nothing happens).  Into an empty list: the list becomes other,
    // preceded by pos undefined strings when pos > 0.  Inserting a list into
    // itself is safe.
    void Insert(const SStringList& other, int pos);

    // Remove length items from offset and return them.  Intended oddity: a
    // partial splice returns its items in a list that is NOT marked defined;
    // a splice of the whole list returns a defined list and leaves this one
    // defined and empty; anything out of range, or of length 0, returns an
    // undefined list and changes nothing.
    SStringList Splice(int offset, int length);
    SStringList Splice(int offset);
    SStringList Splice(int offset, int length, const SStringList& replacement);
    // Copies of items from..to inclusive, or an undefined list when the range
    // is not inside the list.
    SStringList Slice(int from, int to) const;

    // The items with separator between them; no items gives "" for a defined
    // list and an undefined string for an undefined one.  The result is
    // allocated once.
    SString Join(const SString& separator) const;
    SString Join() const;

    // Ascending byte order (shorter first on a common prefix).
    SStringList& Sort();
    SStringList& Reverse();
    // Removes items equal to the one before them (adjacent duplicates only).
    SStringList& Unique();
    // SString::Chop on every item; returns the byte taken from the last item.
    // Intended oddity: the items are changed in place without unsharing the
    // list, so every handle on this list sees the chopped strings.
    char Chop();

    // A new[]-allocated, null-terminated array of NUL-terminated texts, all
    // held in one further new[] block that entry 0 points to: the caller
    // deletes [] the block (the first entry), then the array.  An undefined
    // list, or a failed allocation, gives null.
    operator char**() const;

    // Dump on the standard error stream: the counters and, for a nonzero
    // level, each item with SStringItem::Debug(level).
    void Debug(int level) const;

    // Pattern filters.  With a compiled pattern: mode 1 keeps the matching
    // items, any other mode the others.  With a test expression ("/re/",
    // "!m#re#i", "s/a/b/g", "-d", ...): returns the items that pass and stores
    // the others in *rest when rest is non-null; a substitution edits the
    // items in place.
    SStringList Grep(const SRegex& re, int mode = 1) const;
    SStringList Grep(const SString& test, SStringList* rest = 0);

protected:
    SStringListRep* _rep;

    void _MakeUnique();
    void _Push(const SString& s);
    SStringItem* _FindItem(int i) const;
    void _Unlink(SStringItem* item);
    SString _Take(SStringItem* item);
    void _Free();

    // Calls visit(string) for every item, in order; the strings are the
    // ring's own (Chop changes them in place).
    template <class Visit>
    void _Each(Visit visit) const
    {
        SStringItem* item = _rep->_root;
        for (int i = 0; i < _rep->_count; i++, item = item->_next)
            visit(item->_string);
    }

    // A list of convert(item) for every item; defined when this list is.
    template <class Convert>
    SStringList _Map(Convert convert) const
    {
        SStringList result;
        if (Defined())
            result.Reset();
        _Each([&](const SString& s) { result._Push(convert(s)); });
        return result;
    }

    // The free functions below walk the ring directly.
    friend int Length(const SStringList& l);
    friend SStringList BaseName(const SStringList& l, const SString& suffix);
    friend SStringList LowerCase(const SStringList& l);
    friend SStringList UpperCase(const SStringList& l);
    friend std::ostream& operator<<(std::ostream& os, SStringList l);
    // The named lists walk their keys and values with _Each.
    friend class SNLists;
    friend class SNamedStringList;
};

// Total number of bytes of all items (not the number of items).
int Length(const SStringList& l);
// BaseName (of SString.h) of every item.
SStringList BaseName(const SStringList& l, const SString& suffix = "");
// New lists with every item converted; the argument is unchanged.
SStringList LowerCase(const SStringList& l);
SStringList UpperCase(const SStringList& l);
// Every item written with SString::Write, nothing in between.
std::ostream& operator<<(std::ostream& os, SStringList l);
// Reset, then one item per line (each keeping its "\n") until a read gives
// an empty string.  So a list read with >> is written back byte for byte
// with <<.
std::istream& operator>>(std::istream& is, SStringList& l);

static_assert(sizeof(SStringList) == sizeof(void*), "an SStringList is one pointer");
static_assert(sizeof(SStringListRep) <= sizeof(void*) + 3 * sizeof(int) + 4,
    "the representation holds only root, count, links, flags");
static_assert(sizeof(SStringItem) == 3 * sizeof(void*), "an item is its string and two links");

#endif
