#include "switch/key.h"

#include "services/services.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace sw {
namespace {

// The record of kSplitAddress.
struct SplitAddress {
    std::uint32_t type;
    unsigned char ipv4[4];
    unsigned char ipv6[16];

    std::size_t length() const { return type == 1 ? sizeof ipv4 : type == 2 ? sizeof ipv6 : 0; }
    unsigned char* octets() { return type == 1 ? ipv4 : ipv6; }
};

struct Extent {
    std::size_t octets;
    std::size_t alignment;
};

// What a field takes in a key record.
Extent extent_of(const Field& field) {
    switch (field.kind) {
        case fixed_string(0).kind:
        case counted_string(0).kind: return {field.octets, 1};
        case kInteger.kind:
        case kPolicy.kind: return {sizeof(std::uint32_t), alignof(std::uint32_t)};
        case kMac.kind: return {6, 1};
        case kTextPrefix.kind: return {sizeof(InetText), alignof(InetText)};
        case kAddress.kind: return {sizeof(InetAddress), alignof(InetAddress)};
        case kPrefix.kind: return {sizeof(InetPrefix), alignof(InetPrefix)};
        case kAddressesOnInterface.kind: return {sizeof(InetPairOnInterface), alignof(InetPairOnInterface)};
        case kAddressPair.kind: return {2 * sizeof(InetAddress), alignof(InetAddress)};
        case kSplitAddress.kind: return {sizeof(SplitAddress), alignof(SplitAddress)};
        default: throw std::invalid_argument(fmt::format("index kind {} cannot be in a key", field.kind));
    }
}

std::size_t align(std::size_t offset, std::size_t alignment) {
    return (offset + alignment - 1) / alignment * alignment;
}

template <class Convert>
Convert* converter(int slot) {
    return reinterpret_cast<Convert*>(uib_oid_convert[slot]);
}

}  // namespace

KeyLayout::KeyLayout(std::initializer_list<Field> fields, std::size_t size) {
    std::size_t alignment = 1;
    for (const Field& field : fields) {
        const Extent extent = extent_of(field);
        alignment = std::max(alignment, extent.alignment);
        fields_.push_back({field, align(size_, extent.alignment)});
        size_ = fields_.back().offset + extent.octets;
    }
    size_ = std::max(align(size_, alignment), size);
    clear_ = encode(std::vector<unsigned char>(size_).data());
}

Index KeyLayout::encode(const void* key) const {
    std::array<oid, services::kMaxSubIds> ids;
    std::size_t count = 0;
    for (const auto& [field, offset] : fields_) {
        const auto* octets = static_cast<const unsigned char*>(key) + offset;
        if (field.kind == kInteger.kind) {
            if (count == ids.size()) break;
            std::memcpy(&ids[count++], octets, sizeof(oid));
            continue;
        }
        if (field.kind == fixed_string(0).kind) {
            if (count + field.octets > ids.size()) break;
            std::copy_n(octets, field.octets, ids.begin() + count);
            count += field.octets;
            continue;
        }
        if (field.kind == kSplitAddress.kind) {
            SplitAddress address;
            std::memcpy(&address, octets, sizeof address);
            if (count + 2 + address.length() > ids.size()) break;
            ids[count++] = address.type;
            ids[count++] = static_cast<oid>(address.length());
            std::copy_n(address.octets(), address.length(), ids.begin() + count);
            count += address.length();
            continue;
        }
        const auto length = static_cast<std::uint32_t>(field.octets);
        // The descriptor points into the record, which is only read here.
        const CountedString string{length, length, const_cast<unsigned char*>(octets)};
        const void* source = field.kind == counted_string(0).kind ? static_cast<const void*>(&string) : octets;
        const int needed = uib_snmp_set_oid_size(ids.data() + count, field.kind, source);
        if (needed < 0 || count + static_cast<std::size_t>(needed) > ids.size()) break;
        converter<uib_to_oid>(3 * field.kind + 1)(ids.data() + count, source, needed);
        count += static_cast<std::size_t>(needed);
    }
    Index index;
    index.reserve(count + 1);  // for the index after it
    index.assign(ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(count));
    return index;
}

void KeyLayout::decode(const Index& index, void* key) const {
    std::array<oid, services::kNameRoom> ids{};
    const std::size_t count = std::min(index.size(), services::kMaxSubIds);
    std::copy_n(index.begin(), count, ids.begin());
    std::memset(key, 0, size_);
    std::size_t at = 0;
    for (const auto& [field, offset] : fields_) {
        auto* octets = static_cast<unsigned char*>(key) + offset;
        if (field.kind == kInteger.kind) {
            if (at == count) return;
            std::memcpy(octets, &ids[at++], sizeof(oid));
            continue;
        }
        if (field.kind == fixed_string(0).kind) {
            if (at + field.octets > count) return;
            for (std::size_t i = 0; i < field.octets; ++i) octets[i] = static_cast<unsigned char>(ids[at + i]);
            at += field.octets;
            continue;
        }
        if (field.kind == kSplitAddress.kind) {
            SplitAddress address{.type = ids[at], .ipv4 = {}, .ipv6 = {}};
            if (at + 2 + address.length() > count || ids[at + 1] != address.length()) return;
            for (std::size_t i = 0; i < address.length(); ++i)
                address.octets()[i] = static_cast<unsigned char>(ids[at + 2 + i]);
            std::memcpy(octets, &address, sizeof address);
            at += 2 + address.length();
            continue;
        }
        CountedString string{0, static_cast<std::uint32_t>(field.octets), octets};
        void* target = field.kind == counted_string(0).kind ? static_cast<void*>(&string) : octets;
        const int size = uib_snmp_get_oid_size(ids.data() + at, field.kind);
        if (size < 0 || at + static_cast<std::size_t>(size) > count) return;
        converter<uib_to_field>(3 * field.kind)(ids.data() + at, size, target);
        at += static_cast<std::size_t>(size);
    }
}

Parts KeyLayout::parts(const Index& index) const {
    Parts parts;
    std::size_t at = 0;
    bool whole = true;
    const auto add = [&](Part::Type type, std::size_t first, std::size_t count, std::size_t type_at = 0) {
        whole = whole && first + count <= index.size() && parts.count < parts.parts.size();
        if (whole) parts.parts[parts.count++] = {type, first, count, type_at};
        at = first + count;
    };
    const auto counted = [&](std::size_t first) { return first < index.size() ? std::size_t{index[first]} : 0; };
    const auto add_address = [&](std::size_t type_at, std::size_t length_at, std::size_t bits = 0) {
        const std::size_t count = 1 + counted(length_at) + bits;
        add(bits == 0 ? Part::Type::address : Part::Type::prefix, length_at, count, type_at);
    };
    const auto add_typed_address = [&](std::size_t bits = 0) {
        const std::size_t type_at = at;
        add(Part::Type::number, type_at, 1);
        add_address(type_at, type_at + 1, bits);
    };
    for (const auto& [field, offset] : fields_) {
        switch (field.kind) {
            case kInteger.kind: add(Part::Type::number, at, 1); break;
            case kPolicy.kind: add(Part::Type::number, at + counted(at), 1); break;
            case kMac.kind: add(Part::Type::octets, at, 6); break;
            case fixed_string(0).kind: add(Part::Type::octets, at, field.octets); break;
            case counted_string(0).kind: add(Part::Type::octets, at + 1, counted(at)); break;
            case kTextPrefix.kind:
            case kPrefix.kind: add_typed_address(1); break;
            case kAddressPair.kind: add_typed_address(); [[fallthrough]];
            case kAddress.kind:
            case kSplitAddress.kind: add_typed_address(); break;
            case kAddressesOnInterface.kind: {
                const std::size_t type_at = at;
                add_typed_address();
                add(Part::Type::number, at, 1);
                add_address(type_at, at);
                break;
            }
        }
    }
    return parts;
}

}  // namespace sw
