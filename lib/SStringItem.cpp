// SStringItem: one node of the ring that holds an SStringList's items.

#include "SStringList.h"

#include <iostream>

SStringItem::SStringItem(const SString& s) : _string(s), _next(this), _prev(this) {}

SStringItem::~SStringItem()
{
    _prev->_next = _next;
    _next->_prev = _prev;
}

void SStringItem::Debug(int level) const
{
    if (level == 0) {
        _string.Debug(0);
        return;
    }
    std::cerr << "Prev: " << static_cast<const void*>(_prev)
              << " This: " << static_cast<const void*>(this)
              << " Next: " << static_cast<const void*>(_next);
    if (level < 2) {
        std::cerr << " '";
        _string.Debug(0);
        std::cerr << "'" << std::endl;
    } else {
        std::cerr << std::endl;
        _string.Debug(level);
    }
}
