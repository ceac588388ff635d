// Named lists: small ordered maps keyed by text, and the line-oriented text
// form in which the spool keeps every control and header file.
//
// SNLists holds what all keyed maps share: the keys (an SStringList, in
// insertion order), the case-sensitive flag and the count of spare value
// slots.  Its two derived maps keep a parallel array of values, value of key
// i at index i: SNamedStringList maps a key to an SStringList, SNamedValue to
// a 32-bit int.  SIndexString is a separate small map from an int to an
// SString.  Maps are small (tens of keys): the search is a linear scan and
// the value arrays grow AllocIncrem slots at a time.
//
// A key can exist without a value (operator[] creates it that way); such a
// key is invisible to Keys(), to copies and to the text form.
//
// Text form of an SNamedStringList: one line per value, "key value" + EOL,
// where EOL is "\n", or "\r\n" with the CRLF flag set.  Reading splits the
// text at EOL (with "\r\n" a bare "\n" stays inside the line); a text that
// does not end with EOL reads as if it did.  A line's key is the text before
// its first blank (byte 32); a line that has no blank is one more value of
// the previous key.  A line beginning with a blank or a tab continues the
// value before it: the value gets EOL plus the whole line.  Repeated keys
// collect their values in order.  There is no escaping, no colon handling
// (keys keep their trailing colon) and only the one separator blank is
// stripped.  Writing gives back, byte for byte, any text that ends with EOL
// and whose lines all start with a key (or continue a value), each key's
// lines together; a value holding EOL not followed by a blank or a tab
// would come back split, and a defined but empty list as one empty value.
//
// Failure policy: nothing reports an error beyond the -1 results documented
// below; the 100,000-item limit of SStringList bounds the number of keys.
// Not thread-safe, like the strings and lists the maps hold.
#ifndef TARNWICK_SNAMEDLISTS_H
#define TARNWICK_SNAMEDLISTS_H

#include "SString.h"
#include "SStringList.h"

class SNLists {
public:
    static const int AllocIncrem = 5;

    // Case-sensitive, no keys (an undefined keys list), no spare slots.
    SNLists();
    virtual ~SNLists();
    // The keys that hold a value, in insertion order; undefined when none do.
    virtual SStringList Keys() const = 0;
    // Removes the key from the keys list and frees its slot; returns its
    // former index, or -1 when absent (nothing changes).  Derived maps also
    // move the later values down.
    virtual int Delete(const SString& key);
    // Keys undefined, no spare slots.  Derived maps also free their values.
    virtual void Reset();

    // Keys match exactly (SString ==) when set, the default, and ignoring
    // ASCII case when clear.  Changing the flag on a filled map is allowed;
    // keys that only differ in case then shadow each other: the first added
    // wins every lookup.
    void SetCaseSensitive(int on) { _caseSensitive = on; }
    int CaseSensitive() const { return _caseSensitive; }

protected:
    // Index of the first key that matches, or -1 (also for an empty map).
    // An undefined key and "" match each other, as strings do.
    virtual int _Search(const SString& key) const;

    int _caseSensitive;
    SStringList _keys;
    int _spare;
};

class SNamedStringList : public SNLists {
public:
    // Case-sensitive, "\n" line ends, no keys, no values array.
    SNamedStringList();
    // Copy and assignment take both flags, then every key of other.Keys()
    // with other.Get(key), shared copy-on-write; keys without a value are
    // not copied.  Assigning a map to itself changes nothing.
    SNamedStringList(const SNamedStringList& other);
    SNamedStringList& operator=(const SNamedStringList& other);
    ~SNamedStringList() override;

    // Keys whose value list is defined, in insertion order; an undefined
    // list when there are none.  The result is a new list (it may share
    // representation with the keys, copy-on-write).
    SStringList Keys() const override;
    // Removes key and value: 1, or -1 when the key is absent.  Later keys
    // keep their order and values.
    int Delete(const SString& key) override;
    // Removes every key and frees the values array; the flags stay.
    void Reset() override;
    // A copy of the key's value list (shared copy-on-write); an undefined
    // list for an absent key, and for a key that has no value yet.
    virtual SStringList Get(const SString& key) const;

    // The key's value list, for reading and writing; an absent key is
    // appended with an undefined list, which stays invisible (Keys, copies,
    // text form) until something is pushed or assigned.  The reference lives
    // in the values array: adding another key may move it, so do not keep it
    // across an operator[] with a new key, a Delete or a Reset.
    SStringList& operator[](const SString& key);

    // "\r\n" line ends in the text form, for writing and reading, when set;
    // "\n", the default, when clear.
    void SetCRLF(int on) { _crlf = on; }
    int CRLF() const { return _crlf; }

protected:
    int _crlf;
    SStringList* _values;

    // The text form writer behind operator<<.
    void _AppendText(SString& out) const;

    friend SString& operator<<(SString& out, const SNamedStringList& map);
};

class SNamedValue : public SNLists {
public:
    // Case-sensitive, no keys, no values array.
    SNamedValue();
    // Copy and assignment take the case flag, then every key of
    // other.Keys() with other.Get(key).
    SNamedValue(const SNamedValue& other);
    SNamedValue& operator=(const SNamedValue& other);
    ~SNamedValue() override;

    // Keys whose value is not -1, in insertion order; undefined when none.
    SStringList Keys() const override;
    // Removes key and value: 1, or -1 when the key is absent.
    int Delete(const SString& key) override;
    // Removes every key and frees the values array; the flag stays.
    void Reset() override;

    // The key's value, for reading and writing; an absent key is appended
    // with -1.  -1 is the "no value" mark: storing it hides the key from
    // Keys() and copies (intended).  The reference lives in the values
    // array and moves when a key is added or deleted.
    int& operator[](const SString& key);
    // The key's value, or -1 for an absent key.
    int Get(const SString& key) const;

protected:
    int* _values;
};

// A small map from an int to an SString, in insertion order, searched
// linearly.  Unrelated to SNLists: no flags and no key list of its own.
class SIndexString {
public:
    static const int AllocIncrem = 5;

    // No entries, no array.
    SIndexString();
    // Copy and assignment take every entry, strings shared copy-on-write.
    SIndexString(const SIndexString& other);
    SIndexString& operator=(const SIndexString& other);
    ~SIndexString();

    // The string stored under n, for reading and writing; an absent n is
    // appended with an undefined string.  The reference moves when an entry
    // is added or deleted.
    SString& operator[](const int& n);
    // A copy of the string under n, or an undefined string.
    SString Get(const int& n) const;
    // Removes the entry of n if there is one; later entries move down.
    void Delete(const int& n);
    // The number of entries whose string is not empty (length > 0).  With
    // out non-null, *out receives a new[] array sized for all entries (the
    // caller delete[]s it), whose first returned-count ints are the numbers
    // of those entries, in order.
    int Keys(int** out) const;

protected:
    struct _NumToIndex {
        int _num;
        SString _value;
    };
    int _count;
    int _spare;
    _NumToIndex* _entries;

    // Index of the entry for n, or -1.
    int _Find(int n) const;
};

// Appends the text form of map to out, built in one allocation, and returns
// out.  A map without keys that hold a value appends nothing (an undefined
// out stays undefined).
SString& operator<<(SString& out, const SNamedStringList& map);
// Resets map (its flags stay and choose the line end and the key matching),
// then parses text into it; returns text.  An undefined or empty text leaves
// the map empty.  Never fails: every line lands somewhere.  Lines before the
// first key (a first line without a blank, or one beginning with a blank)
// go to the undefined key, which the writer puts back as " value".
const SString& operator>>(const SString& text, SNamedStringList& map);

#endif
