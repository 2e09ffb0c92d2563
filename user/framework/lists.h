// Member lists: octet strings with a bit for each port or VLAN, the difference between two of them, and walks over
// their members. Member n, from 1, is octet (n - 1) / 8, mask 0x80 >> (n - 1) % 8.
#pragma once

#include "framework/host.h"
#include "framework/ifindex.h"
#include "framework/snmp.h"
#include "framework/write.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace switchmib {

// A list of `size` octets; members after `last` are never looked at. The host makes of two lists what is in `both`,
// and what is in `either` but not in both.
template <std::size_t size, int last, auto both, auto either>
struct MemberList {
    unsigned char octets[size] = {};

    bool has(int member) const { return octets[(member - 1) / 8] & 0x80 >> (member - 1) % 8; }

    MemberList common(const MemberList& other) const {
        MemberList result;
        both(octets, other.octets, result.octets);
        return result;
    }

    // Members of exactly one of the two.
    MemberList differing(const MemberList& other) const {
        MemberList result;
        either(octets, other.octets, result.octets);
        return result;
    }

    // Calls visit(member) for each member in ascending order, up to the first error, which is the result.
    template <class Visit>
    Error for_each(Visit visit) const {
        constexpr std::size_t kWord = 4, kBlock = size % 64 == 0 ? 64 : kWord;  // octets
        static_assert(size % kWord == 0);
        for (std::size_t block = 0; block < size; block += kBlock) {
            if (is_clear<kBlock>(block)) continue;
            for (std::size_t at = block; at < block + kBlock; at += kWord) {
                if (kBlock > kWord && is_clear<kWord>(at)) continue;
                const int first = static_cast<int>(8 * at) + 1;
                for (int member = first; member < first + 32 && member <= last; ++member)
                    if (has(member)) TRY(visit(member));
            }
        }
        return noError;
    }

private:
    template <std::size_t count>
    bool is_clear(std::size_t from) const {
        std::uint32_t any = 0;
        for (std::size_t at = from; at < from + count; at += sizeof any) {
            std::uint32_t word;
            std::memcpy(&word, octets + at, sizeof word);
            any |= word;
        }
        return any == 0;
    }
};

// What a new list adds to the current one, and what it removes from it.
template <class List>
struct Difference {
    List added;
    List removed;

    Difference(const List& current, const List& wanted) : Difference(current.common(wanted), current, wanted) {}

private:
    Difference(const List& common, const List& current, const List& wanted)
        : added(common.differing(wanted)), removed(common.differing(current)) {}
};

using PortList = MemberList<12, kLastPort, PORTLIST_and, PORTLIST_xor>;
using VlanList = MemberList<512, 4094, VLANLIST_and, VLANLIST_xor>;

}  // namespace switchmib
