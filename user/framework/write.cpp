#include "framework/write.h"

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

Error Set::column(const TableId& table) const {
    if (name_length < table.length) return noSuchName;
    table.oids[table.length - 1] = name[table.length - 1];
    return noError;
}

Error Set::row(const TableId& table, const KeyShape& shape, void* key) const {
    TRY(column(table));
    std::size_t given = name_length;
    return parse_index(table.oids, table.length, name, &given, shape, key, 1) < 0 ? noSuchName : noError;
}

Error Set::interface_name(std::uint32_t ifindex, InterfaceName& name) {
    return if_utl_ifindex_to_ifname(ifindex, name.text) < 0 ? genErr : noError;
}

Error Set::enter(const InterfaceName& interface, int line) const {
    return global(Command("interface %s", interface.text), line);
}

Error Set::copy(void* field, std::size_t room) const {
    if (length_given > room) return wrongLength;
    if (length_given > 0) std::memcpy(field, value, length_given);
    return noError;
}

bool Set::lookup(const Command& command, int magic, void* result, int size, int line) const {
    std::size_t length = 0;
    return uib_sh_show_request(2, command, result, size, &length, nullptr, 0, magic, 1, 0, caller, line) == 0;
}

Error Set::interface_line(const TableId& table, std::initializer_list<Line> lines, int line) const {
    std::int32_t number;
    InterfaceKey key;
    InterfaceName interface;
    TRY(integer(number));
    TRY(row(table, key));
    TRY(interface_name(key.ifindex, interface));
    const auto* chosen = std::ranges::find(lines, number, &Line::value);
    if (chosen == lines.end()) return wrongValue;
    if (!acting()) return noError;
    TRY(enter(interface, line));
    return sub(chosen->text, line);
}

Error refuse(const Refusal& refusal, const Set& set) {
    TRY(set.type(refusal.type));
    if (refusal.length != kAnyLength) TRY(set.length(static_cast<std::size_t>(refusal.length)));
    if (refusal.table != nullptr) TRY(set.column(*refusal.table));
    if (refusal.low != INT_MIN || refusal.high != INT_MAX) {
        std::int32_t number;
        std::memcpy(&number, set.value, sizeof number);
        TRY(Set::range(number, refusal.low, refusal.high));
    }
    return set.acting() ? genErr : noError;
}

}  // namespace switchmib
