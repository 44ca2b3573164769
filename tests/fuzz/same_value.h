// Value equality for the fuzz targets' round trips, up to what a format cannot carry.
#pragma once

#include <cstdint>

#include "platform/plist.h"

namespace sysmend::plist {

// Equality up to what a format cannot carry: XML keeps whole seconds of dates and reads a
// {CF$UID = n} dictionary as a UID; binary dates are doubles, so nanoseconds may move.
inline bool same(const Value& a, const Value& b, Date::duration dateTolerance) {
    if (const Dictionary* d = a.asDictionary(); d && b.asUid() && d->size() == 1) {
        const Value* uid = d->find("CF$UID");
        return uid && uid->asInteger() &&
               static_cast<std::uint64_t>(*uid->asInteger()) == b.asUid()->value;
    }
    if (a.type() != b.type())
        return false;
    if (const Array* x = a.asArray()) {
        const Array& y = *b.asArray();
        if (x->size() != y.size())
            return false;
        for (std::size_t i = 0; i < x->size(); ++i) {
            if (!same((*x)[i], y[i], dateTolerance))
                return false;
        }
        return true;
    }
    if (const Dictionary* x = a.asDictionary()) {
        const Dictionary& y = *b.asDictionary();
        if (x->size() != y.size())
            return false;
        for (const auto& [key, value] : *x) {
            const Value* other = y.find(key);
            if (!other || !same(value, *other, dateTolerance))
                return false;
        }
        return true;
    }
    if (a.asDate()) {
        const auto difference = *a.asDate() - *b.asDate();
        return difference <= dateTolerance && -difference <= dateTolerance;
    }
    return a == b;
}

}  // namespace sysmend::plist
