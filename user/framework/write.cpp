#include "framework/write.h"

#include <algorithm>
#include <cstring>

namespace switchmib {

Error configure(Mode mode, const char* command, const char* caller, int line) {
    return uib_sh_config_request(mode, command, caller, line) == 0 ? noError : genErr;
}

Error enter_intf(std::uint32_t ifindex, int line) {
    InterfaceName name;
    if_utl_ifindex_to_ifname(ifindex, name.text);
    return configure(kGlobalMode, Command("interface %s", name.text), "_enter_intf", line);
}

Error Set::column() const {
    if (name_length < table->length) return noSuchName;
    table->oids[table->length - 1] = name[table->length - 1];
    return noError;
}

Error Set::row(const KeyShape& shape, void* key) const {
    TRY(column());
    std::size_t given = name_length;
    return parse_index(table->oids, table->length, name, &given, shape, key, 1) < 0 ? noSuchName : noError;
}

Error Set::interface_name(std::uint32_t ifindex, InterfaceName& name, Error missing) {
    return if_utl_ifindex_to_ifname(ifindex, name.text) < 0 ? missing : noError;
}

Error Set::enter(const InterfaceName& interface, int line) const {
    return global(Command("interface %s", interface.text), line);
}

void Set::copy(void* field, std::size_t room) const {
    if (const std::size_t octets = std::min(length_given, room); octets > 0) std::memcpy(field, value, octets);
}

Error Set::text(char* buffer, std::size_t size) const {
    const unsigned char* const end = value + length_given;
    for (const unsigned char* octet = value; octet < end && *octet != '\0'; ++octet)
        if (*octet < ' ' || *octet == 127) return wrongValue;
    std::memset(buffer, 0, size);
    copy(buffer, size - 1);
    return noError;
}

bool Set::lookup(const Command& command, int magic, void* result, int size, int line) const {
    std::size_t length = 0;
    return uib_sh_show_request(2, command, result, size, &length, nullptr, 0, magic, 1, 0, caller, line) == 0;
}

Error Set::choose(Lines lines, std::int32_t number, const char*& text) {
    const auto* chosen = std::ranges::find(lines, number, &Line::value);
    if (chosen == lines.end()) return wrongValue;
    text = chosen->text;
    return noError;
}

Error Set::scalar_line(Lines lines, int line) const {
    std::int32_t number;
    const char* text;
    TRY(integer(number));
    TRY(choose(lines, number, text));
    return acting() ? global(text, line) : noError;
}

Error Set::interface_line(Lines lines, int line) const {
    InterfaceKey key;
    InterfaceName interface;
    std::int32_t number;
    const char* text;
    TRY(integer(number));
    TRY(row(key));
    TRY(interface_name(key.ifindex, interface));
    TRY(choose(lines, number, text));
    if (!acting()) return noError;
    TRY(enter(interface, line));
    return sub(text, line);
}

Error refuse(const Refusal& refusal, Asn type, const Set& set) {
    TRY(set.type(type));
    const bool any =
        refusal.length == Refusal::kAnyLength || (refusal.length == Refusal::kTypesLength && type == OctetString);
    if (!any) TRY(set.length(refusal.length == Refusal::kTypesLength ? 4u : static_cast<std::size_t>(refusal.length)));
    if (set.table != nullptr) TRY(set.column());
    if (refusal.low != INT_MIN || refusal.high != INT_MAX) {
        std::int32_t number;
        std::memcpy(&number, set.value, sizeof number);
        TRY(Set::range(number, refusal.low, refusal.high));
    }
    return refusal.always || set.acting() ? genErr : noError;
}

}  // namespace switchmib
