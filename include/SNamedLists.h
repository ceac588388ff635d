// Named lists: small ordered maps keyed by text, and the line-oriented text
// form in which the spool keeps every control and header file.
//
// SNLists holds the keys (in insertion order) and the key search; its two
// derived maps add the values: SNamedStringList maps a key to an SStringList,
// SNamedValue to a 32-bit int.  SIndexString is a separate small map from an
// int to an SString.  Maps are small (tens of keys): search is linear and the
// value arrays grow AllocIncrem slots at a time.
//
// Text form of an SNamedStringList: one line per value, "key value" + EOL,
// where EOL is "\n", or "\r\n" with the CRLF flag set.  Lines that begin with
// a blank or a tab continue the value before them; a line without a blank is
// one more value of the previous key.
//
// Failure policy: nothing reports an error beyond the -1 results documented
// below; the 100,000-item limit of SStringList bounds the number of keys.
#ifndef TARNWICK_SNAMEDLISTS_H
#define TARNWICK_SNAMEDLISTS_H

#include "SString.h"
#include "SStringList.h"

class SNLists {
public:
    static const int AllocIncrem = 5;

    SNLists();
    virtual ~SNLists();
    virtual SStringList Keys() const = 0;
    // Removes the key from the keys list; its former index, or -1.
    virtual int Delete(const SString& key);
    // No keys (undefined keys list), no spare slots.
    virtual void Reset();

    // Keys match exactly when set (the default), ignoring ASCII case when clear.
    void SetCaseSensitive(int on) { _caseSensitive = on; }
    int CaseSensitive() const { return _caseSensitive; }

protected:
    // Index of key in the keys list, or -1.
    virtual int _Search(const SString& key) const;

    int _caseSensitive;
    SStringList _keys;
    int _spare;
};

class SNamedStringList : public SNLists {
public:
    SNamedStringList();
    SNamedStringList(const SNamedStringList& other);
    SNamedStringList& operator=(const SNamedStringList& other);
    ~SNamedStringList() override;

    // Keys whose value list is defined, in insertion order; undefined when
    // there are none.
    SStringList Keys() const override;
    // Removes key and value: 1, or -1 when the key is absent.
    int Delete(const SString& key) override;
    void Reset() override;
    // A copy of the key's value list; undefined for an absent key.
    virtual SStringList Get(const SString& key) const;

    // The key's value list, creating the key with an undefined list.  A key
    // created and never given a value shows in neither Keys(), the text form
    // nor copies.
    SStringList& operator[](const SString& key);

    // "\r\n" line ends in the text form when set; "\n" (the default) when clear.
    void SetCRLF(int on) { _crlf = on; }
    int CRLF() const { return _crlf; }

protected:
    int _crlf;
    SStringList* _values;
};

class SNamedValue : public SNLists {
public:
    SNamedValue();
    SNamedValue(const SNamedValue& other);
    SNamedValue& operator=(const SNamedValue& other);
    ~SNamedValue() override;

    // Keys whose value is not -1.
    SStringList Keys() const override;
    int Delete(const SString& key) override;
    void Reset() override;

    // The key's value, creating the key with -1.
    int& operator[](const SString& key);
    // The value, or -1 for an absent key.
    int Get(const SString& key) const;

protected:
    int* _values;
};

class SIndexString {
public:
    static const int AllocIncrem = 5;

    SIndexString();
    SIndexString(const SIndexString& other);
    SIndexString& operator=(const SIndexString& other);
    ~SIndexString();

    // The string stored under n, appending an undefined one when absent.
    SString& operator[](const int& n);
    // A copy, or an undefined string.
    SString Get(const int& n) const;
    // Removes the entry if present; later entries move down.
    void Delete(const int& n);
    // Number of entries whose string is not empty; with out non-null, also a
    // new[] array (the caller deletes it) holding those numbers.
    int Keys(int** out) const;

protected:
    struct _NumToIndex {
        int _num;
        SString _value;
    };
    int _count;
    int _spare;
    _NumToIndex* _entries;
};

// Appends the text form of map to out; returns out.
SString& operator<<(SString& out, const SNamedStringList& map);
// Resets map, then parses text into it; returns text.
const SString& operator>>(const SString& text, SNamedStringList& map);

#endif
