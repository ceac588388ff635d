// Named lists: the keyed maps SNLists, SNamedStringList and SNamedValue, the
// int-keyed SIndexString, and the reader and writer of the text form.
//
// The derived maps keep their values in a plain array parallel to the keys
// list; every change of the keys list (append, delete, reset) is matched by
// the same change of the array.  Spare slots are counted in the base, so an
// array always holds Count() + _spare slots.
#include <cstring>

#include "SNamedLists.h"

namespace {

char FoldAscii(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// Equal ignoring ASCII case; like comparing lowercased copies, without
// making them.
bool SameIgnoringCase(const SString& a, const SString& b)
{
    const int n = a.Length();
    if (n != b.Length())
        return false;
    const char* p = a.Data();
    const char* q = b.Data();
    for (int i = 0; i < n; i++)
        if (FoldAscii(p[i]) != FoldAscii(q[i]))
            return false;
    return true;
}

// Copies n bytes to p and returns the end; an undefined string has no
// buffer to copy from.
char* Put(char* p, const char* from, int n)
{
    if (n > 0)
        std::memcpy(p, from, n);
    return p + n;
}

// Takes one spare slot of array, which holds used slots in use.  With none
// left, the array is first replaced by one with incr more slots; elements
// are assigned over, so lists and strings are shared, not copied.
template <class T>
void TakeSlot(T*& array, int used, int& spare, int incr)
{
    if (spare == 0) {
        T* grown = new T[used + incr];
        for (int i = 0; i < used; i++)
            grown[i] = array[i];
        delete[] array;
        array = grown;
        spare = incr;
    }
    spare--;
}

// The keys whose slot holds a value.  The result shares the keys list and
// drops the others from the back, so that the indexes stay valid; usually
// nothing is dropped and nothing is copied.
template <class HasValue>
SStringList KeysWhere(const SStringList& keys, HasValue hasValue)
{
    SStringList result = keys;
    for (int i = keys.Count() - 1; i >= 0; i--)
        if (!hasValue(i))
            result.Delete(i);
    if (result.Count() == 0)
        result.Undef();
    return result;
}

} // namespace

// ---- SNLists -------------------------------------------------------------

SNLists::SNLists() : _caseSensitive(1), _spare(0)
{
}

SNLists::~SNLists()
{
}

int SNLists::_Search(const SString& key) const
{
    if (_caseSensitive)
        return _keys.Index(key);
    int found = -1;
    int i = 0;
    _keys._Each([&](const SString& k) {
        if (found < 0 && SameIgnoringCase(k, key))
            found = i;
        i++;
    });
    return found;
}

int SNLists::Delete(const SString& key)
{
    const int i = _Search(key);
    if (i < 0)
        return -1;
    _keys.Delete(i);
    _spare++;
    return i;
}

void SNLists::Reset()
{
    _spare = 0;
    _keys.Undef();
}

// ---- SNamedStringList ----------------------------------------------------

SNamedStringList::SNamedStringList() : _crlf(0), _values(nullptr)
{
}

SNamedStringList::SNamedStringList(const SNamedStringList& other)
    : _crlf(0), _values(nullptr)
{
    *this = other;
}

SNamedStringList& SNamedStringList::operator=(const SNamedStringList& other)
{
    if (this == &other)
        return *this;
    Reset();
    _caseSensitive = other._caseSensitive;
    _crlf = other._crlf;
    // Through the lookups, so that a copy sees what a reader of other sees.
    other.Keys()._Each([&](const SString& key) { (*this)[key] = other.Get(key); });
    return *this;
}

SNamedStringList::~SNamedStringList()
{
    delete[] _values;
}

SStringList SNamedStringList::Keys() const
{
    return KeysWhere(_keys, [this](int i) { return _values[i].Defined(); });
}

int SNamedStringList::Delete(const SString& key)
{
    const int i = SNLists::Delete(key);
    if (i < 0)
        return -1;
    const int n = _keys.Count();
    for (int j = i; j < n; j++)
        _values[j] = _values[j + 1];
    _values[n] = SStringList();
    return 1;
}

void SNamedStringList::Reset()
{
    SNLists::Reset();
    delete[] _values;
    _values = nullptr;
}

SStringList SNamedStringList::Get(const SString& key) const
{
    const int i = _Search(key);
    return i < 0 ? SStringList() : _values[i];
}

SStringList& SNamedStringList::operator[](const SString& key)
{
    int i = _Search(key);
    if (i < 0) {
        TakeSlot(_values, _keys.Count(), _spare, AllocIncrem);
        i = _keys.Push(key) - 1;
        _values[i].Undef();
    }
    return _values[i];
}

// ---- SNamedValue ---------------------------------------------------------

SNamedValue::SNamedValue() : _values(nullptr)
{
}

SNamedValue::SNamedValue(const SNamedValue& other) : _values(nullptr)
{
    *this = other;
}

SNamedValue& SNamedValue::operator=(const SNamedValue& other)
{
    if (this == &other)
        return *this;
    Reset();
    _caseSensitive = other._caseSensitive;
    const SStringList keys = other.Keys();
    for (int i = 0; i < keys.Count(); i++)
        (*this)[keys.Get(i)] = other.Get(keys.Get(i));
    return *this;
}

SNamedValue::~SNamedValue()
{
    delete[] _values;
}

SStringList SNamedValue::Keys() const
{
    return KeysWhere(_keys, [this](int i) { return _values[i] != -1; });
}

int SNamedValue::Delete(const SString& key)
{
    const int i = SNLists::Delete(key);
    if (i < 0)
        return -1;
    const int n = _keys.Count();
    std::memmove(_values + i, _values + i + 1, (n - i) * sizeof(int));
    _values[n] = -1;
    return 1;
}

void SNamedValue::Reset()
{
    SNLists::Reset();
    delete[] _values;
    _values = nullptr;
}

int& SNamedValue::operator[](const SString& key)
{
    int i = _Search(key);
    if (i < 0) {
        TakeSlot(_values, _keys.Count(), _spare, AllocIncrem);
        i = _keys.Push(key) - 1;
        _values[i] = -1;
    }
    return _values[i];
}

int SNamedValue::Get(const SString& key) const
{
    const int i = _Search(key);
    return i < 0 ? -1 : _values[i];
}

// ---- SIndexString --------------------------------------------------------

SIndexString::SIndexString() : _count(0), _spare(0), _entries(nullptr)
{
}

SIndexString::SIndexString(const SIndexString& other)
    : _count(0), _spare(0), _entries(nullptr)
{
    *this = other;
}

SIndexString& SIndexString::operator=(const SIndexString& other)
{
    if (this == &other)
        return *this;
    _NumToIndex* copy = other._count > 0 ? new _NumToIndex[other._count] : nullptr;
    for (int i = 0; i < other._count; i++)
        copy[i] = other._entries[i];
    delete[] _entries;
    _entries = copy;
    _count = other._count;
    _spare = 0;
    return *this;
}

SIndexString::~SIndexString()
{
    delete[] _entries;
}

int SIndexString::_Find(int n) const
{
    for (int i = 0; i < _count; i++)
        if (_entries[i]._num == n)
            return i;
    return -1;
}

SString& SIndexString::operator[](const int& n)
{
    const int i = _Find(n);
    if (i >= 0)
        return _entries[i]._value;
    TakeSlot(_entries, _count, _spare, AllocIncrem);
    _NumToIndex& e = _entries[_count++];
    e._num = n;
    e._value = SString();
    return e._value;
}

SString SIndexString::Get(const int& n) const
{
    const int i = _Find(n);
    return i < 0 ? SString() : _entries[i]._value;
}

void SIndexString::Delete(const int& n)
{
    const int i = _Find(n);
    if (i < 0)
        return;
    for (int j = i + 1; j < _count; j++)
        _entries[j - 1] = _entries[j];
    _count--;
    _spare++;
    _entries[_count]._value = SString();
}

int SIndexString::Keys(int** out) const
{
    int* numbers = out ? new int[_count] : nullptr;
    int found = 0;
    for (int i = 0; i < _count; i++) {
        if (_entries[i]._value.Length() > 0) {
            if (numbers)
                numbers[found] = _entries[i]._num;
            found++;
        }
    }
    if (out)
        *out = numbers;
    return found;
}

// ---- Text form -----------------------------------------------------------

// Every value becomes the line key + " " + value + EOL; a key whose list is
// defined but empty still gets the line key + " " + EOL.  The size is summed
// first so that the text is built in one allocation and copied once.
void SNamedStringList::_AppendText(SString& out) const
{
    const char* eol = _crlf ? "\r\n" : "\n";
    const int eolLen = _crlf ? 2 : 1;
    long total = 0;
    int i = 0;
    _keys._Each([&](const SString& key) {
        const SStringList& values = _values[i++];
        if (values.Defined()) {
            const int lines = values.Count() > 0 ? values.Count() : 1;
            total += static_cast<long>(lines) * (key.Length() + 1 + eolLen) + Length(values);
        }
    });
    if (total == 0)
        return;

    // A text beyond the string size limit is refused by Resize (exit 108), so
    // the clamp never truncates what is copied.
    const long limit = SString::AllocLimit;
    SString text;
    char* p = text.Resize(static_cast<int>(total < limit ? total : limit));
    auto line = [&](const SString& key, const SString& value) {
        p = Put(p, key.Data(), key.Length());
        *p++ = ' ';
        p = Put(p, value.Data(), value.Length());
        p = Put(p, eol, eolLen);
    };
    i = 0;
    _keys._Each([&](const SString& key) {
        const SStringList& values = _values[i++];
        if (values.Count() == 0 && values.Defined())
            line(key, SString());
        values._Each([&](const SString& value) { line(key, value); });
    });
    if (out.Length() == 0)
        out = text;
    else
        out += text;
}

SString& operator<<(SString& out, const SNamedStringList& map)
{
    map._AppendText(out);
    return out;
}

namespace {

// Reads the text form line by line straight from the text's buffer.  A value
// and its continuation lines are one contiguous run of the text (they were
// split at EOL and are joined again with EOL), so each value is copied once.
class TextReader {
public:
    TextReader(const SString& text, SNamedStringList& map)
        : _map(map), _p(text.Data()), _len(text.Length()),
          _eol(map.CRLF() ? 2 : 1), _pos(0), _values(nullptr),
          _keyAt(nullptr), _keyLen(0)
    {
    }

    void Run()
    {
        while (_pos < _len)
            _Line();
    }

private:
    SNamedStringList& _map;
    const char* _p;
    int _len;
    int _eol;
    int _pos;               // start of the next line
    SStringList* _values;   // the current key's values; null before the first key
    const char* _keyAt;     // the current key's bytes in the text
    int _keyLen;

    // End of the line that starts at from: the position of the next EOL, or
    // the end of the text.
    int _LineEnd(int from) const
    {
        for (int q = from; q < _len;) {
            const void* hit = std::memchr(_p + q, '\n', _len - q);
            if (!hit)
                break;
            const int nl = static_cast<int>(static_cast<const char*>(hit) - _p);
            if (_eol == 1)
                return nl;
            if (nl > from && _p[nl - 1] == '\r')
                return nl - 1;
            q = nl + 1;
        }
        return _len;
    }

    // Moves _pos behind the line ending at end; there is no next line when
    // the text ends there or right behind its EOL.
    void _Advance(int end)
    {
        _pos = end < _len ? end + _eol : _len;
    }

    bool _NextIsContinuation() const
    {
        return _pos < _len && (_p[_pos] == ' ' || _p[_pos] == '\t');
    }

    void _Line()
    {
        const int start = _pos;
        int end = _LineEnd(start);
        const char* blank = static_cast<const char*>(std::memchr(_p + start, ' ', end - start));
        int valueStart = start;
        if (blank) {
            valueStart = static_cast<int>(blank - _p) + 1;
            if (blank > _p + start)
                _SetKey(_p + start, static_cast<int>(blank - _p) - start);
        }
        if (!_values)
            _values = &_map[SString()];
        _Advance(end);
        while (_NextIsContinuation()) {
            end = _LineEnd(_pos);
            _Advance(end);
        }
        _values->Push(SString(_p + valueStart, end - valueStart));
    }

    // Looks the key up only when it differs from the current one: repeated
    // keys come in runs, and the map does not change in between.
    void _SetKey(const char* at, int n)
    {
        if (_values && n == _keyLen && std::memcmp(at, _keyAt, n) == 0)
            return;
        _values = &_map[SString(at, n)];
        _keyAt = at;
        _keyLen = n;
    }
};

} // namespace

const SString& operator>>(const SString& text, SNamedStringList& map)
{
    const SString keep(text);  // text may live inside the map that Reset empties
    map.Reset();
    TextReader(keep, map).Run();
    return text;
}
