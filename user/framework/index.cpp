#include "framework/index.h"

#include <algorithm>
#include <cstring>

namespace switchmib {
namespace {

constexpr int kFixedString = 0;
constexpr int kCountedString = 14;
constexpr int kMaxNameLength = 128;
constexpr std::size_t kSlots = 3;  // of a kind in the host's conversion table

// A size that the host read out of a request. A hostile count stays small enough to be summed, and fits no exact request.
int bounded(int size) { return size < 0 || size > kMaxNameLength ? kMaxNameLength + 1 : size; }

void to_field(const KeyShape::Field& field, const oid* first, int count, void* key) {
    unsigned char* octets = static_cast<unsigned char*>(key) + field.offset;
    if (field.kind == kFixedString) {
        for (int i = 0; i < std::min<int>(count, field.octets); ++i) octets[i] = static_cast<unsigned char>(first[i]);
        return;
    }
    auto* convert = reinterpret_cast<uib_to_field*>(uib_oid_convert[kSlots * field.kind]);
    if (field.kind == kCountedString) {
        CountedString string{0, field.octets, octets};
        convert(first, count, &string);
        return;
    }
    convert(first, count, octets);
}

}  // namespace

int parse_index(const oid* prefix, std::size_t prefix_length, const oid* name, std::size_t* name_length,
                const KeyShape& shape, void* key, int exact) {
    if (*name_length == prefix_length) return 0;

    const oid* const end = name + *name_length;  // before the index where the request ends before it
    const oid* at = name + prefix_length;
    int sizes[KeyShape::kMaxFields];
    for (int i = 0; i < shape.count; ++i) {
        sizes[i] = at < end ? bounded(uib_snmp_get_oid_size(at, shape.fields[i].kind)) : 0;
        at += sizes[i];
    }

    if (exact) {
        if (at != end) return -1;
    } else if (*name_length < prefix_length || snmp_oid_compare(name, *name_length, prefix, prefix_length) < 0) {
        *name_length = prefix_length;
        return 0;
    }

    at = name + prefix_length;
    int i = 0;
    for (; i < shape.count && at < end; ++i) {
        const KeyShape::Field& field = shape.fields[i];
        if (field.kind == kCountedString && *at != field.octets) return -1;
        to_field(field, at, std::min(static_cast<int>(end - at), sizes[i]), key);
        at += sizes[i];
    }
    return exact && i < shape.count && shape.fields[i].kind == kCountedString ? -1 : 0;
}

void build_name(const oid* prefix, std::size_t prefix_length, oid* name, std::size_t* name_length,
                const KeyShape& shape, const void* key) {
    std::memcpy(name, prefix, prefix_length * sizeof(oid));
    oid* out = name + prefix_length;
    for (int i = 0; i < shape.count; ++i) {
        const KeyShape::Field& field = shape.fields[i];
        auto* octets = static_cast<unsigned char*>(const_cast<void*>(key)) + field.offset;
        const void* source = octets;
        CountedString string;
        if (field.kind == kCountedString) {
            string = {field.octets, field.octets, octets};
            source = &string;
        }
        const int count = uib_snmp_set_oid_size(out, field.kind, source);
        if (count < 0 || count > name + kMaxNameLength - out) continue;
        if (field.kind == kFixedString)
            for (int at = 0; at < count; ++at) out[at] = at < field.octets ? octets[at] : 0;
        else
            reinterpret_cast<uib_to_oid*>(uib_oid_convert[kSlots * field.kind + 1])(out, source, count);
        out += count;
    }
    *name_length = static_cast<std::size_t>(out - name);
}

}  // namespace switchmib
