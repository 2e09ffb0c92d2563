#include "switch/values.h"

namespace sw {
namespace {

template <class Number>
Value raw(const Number& number) {
    return Value(reinterpret_cast<const char*>(&number), sizeof number);
}

}  // namespace

Index join(std::initializer_list<Index> parts) {
    Index joined;
    for (const Index& part : parts) joined.insert(joined.end(), part.begin(), part.end());
    return joined;
}

Value number(std::uint32_t value) { return raw(value); }

Value counter64(std::uint64_t value) { return raw(value); }

Value object_id(const Index& ids) { return Value(reinterpret_cast<const char*>(ids.data()), ids.size() * sizeof(oid)); }

Value octets_of(const oid* first, std::size_t count) {
    Value value(count, '\0');
    for (std::size_t i = 0; i < count; ++i) value[i] = static_cast<char>(first[i]);
    return value;
}

}  // namespace sw
