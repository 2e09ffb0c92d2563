#include "switch/group_membership.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace sw {
namespace {

constexpr std::size_t kGroup = 6;                                // sub-identifiers of one: type, length, octets
constexpr std::uint32_t kForeignQuerier = kVlanIfIndexBase + 1;  // where another router asks

// What a row of snooping has: port, VLAN interface, group, perhaps source.
bool has_source(const Index& snooped) { return snooped.size() > 2 + kGroup; }
Index group_of(const Index& snooped) { return {snooped.begin() + 2, snooped.begin() + 2 + kGroup}; }
// The row that the router has for it: group, VLAN interface, perhaps source, without its type.
Index row_of(const Index& snooped) {
    Index row = join({group_of(snooped), {snooped[1]}});
    if (has_source(snooped)) row.insert(row.end(), snooped.begin() + 3 + kGroup, snooped.end());
    return row;
}

template <class Members>
bool any_configured(const Members& members) {
    return std::ranges::any_of(members, [](const auto& member) { return member.second.configured; });
}
template <class Members>
const Membership& first(const Members& members) {
    return std::ranges::min_element(members, {}, [](const auto& member) { return member.second.since; })->second;
}
template <class Members>
const Membership& last(const Members& members) {
    return std::ranges::max_element(members, {}, [](const auto& member) { return member.second.since; })->second;
}

}  // namespace

GroupMembership::GroupMembership(Switch& its_switch)
    : Area(its_switch), vlan_interfaces_(its_switch.area<VlanInterfaces>()) {
    for (const auto& [ifindex, interface] : its_switch.area<Interfaces>().all())
        GroupMembership::interface_made(ifindex);
    for (Access* access : {&igmp_, &mld_}) {
        access->limits[kVlanIfIndexBase + 10] = 128;
        access->lists[kVlanIfIndexBase + 10] = "office-channels";
    }
}

void GroupMembership::interface_made(std::uint32_t ifindex) {
    if (VlanInterfaces::is_one(ifindex)) routers_[ifindex].created = uptime();
}

void GroupMembership::interface_removed(std::uint32_t ifindex) {
    routers_.erase(ifindex);
    for (Access* access : {&igmp_, &mld_}) {
        access->limits.erase(ifindex);
        access->lists.erase(ifindex);
    }
}

void GroupMembership::vlan_removed(std::uint32_t vid) {
    const auto from = [vlan = kVlanIfIndexBase + vid](auto& rows, std::size_t at) {
        std::erase_if(rows, [vlan, at](const auto& row) { return row.first[at] == vlan; });
    };
    from(groups_, kGroup);
    from(by_interface_, 0);
    from(sources_, kGroup);
}

// IGMP's alone: the router's tables have no MLD rows.
void GroupMembership::joined(const Index& snooped, const Membership& member) {
    if (snooped[2] != kIgmpType) return;
    (has_source(snooped) ? sources_ : groups_)[row_of(snooped)].insert_or_assign(snooped[0], member);
    if (has_source(snooped)) return;
    const Index group = group_of(snooped);
    by_interface_.emplace(join({{snooped[1]}, group}), octets_of(&group[2], kGroup - 2));
    if (const auto router = routers_.find(snooped[1]); router != routers_.end()) ++router->second.joins;
}

void GroupMembership::left(const Index& snooped) {
    if (snooped[2] != kIgmpType) return;
    auto& rows = has_source(snooped) ? sources_ : groups_;
    const auto row = rows.find(row_of(snooped));
    if (row == rows.end()) return;
    row->second.erase(snooped[0]);
    if (!row->second.empty()) return;
    rows.erase(row);
    if (!has_source(snooped)) by_interface_.erase(join({{snooped[1]}, group_of(snooped)}));
}

// --- Tables ----------------------------------------------------------------------------------------------------------

// Configured ones stay; others are renewed by the answer to each query.
Duration GroupMembership::expiry(const Members& members, const Router& router) const {
    if (any_configured(members)) return {};
    return router.robustness * router.interval() + router.response() -
           (uptime() - first(members).since) % router.interval();
}

void GroupMembership::add_router_tables(Description& d) {
    const auto is_foreign = [](const Index& index) { return index[0] == kForeignQuerier; };
    const auto querier_expiry = [this, is_foreign](const Router& r, const Index& index) {
        if (!is_foreign(index)) return Duration();
        return r.robustness * r.interval() + r.response() / 2 - uptime() % r.interval();
    };
    const auto querier = [](const Router&, const Index& index) {
        const oid octets[] = {10, 0, (index[0] - kVlanIfIndexBase) % 0x100, 1};
        return octets_of(octets, std::size(octets));
    };
    const auto groups_on = [this](const Router&, const Index& index) {
        const auto first = by_interface_.lower_bound({index[0]});
        return std::distance(first, by_interface_.lower_bound({index[0] + 1}));
    };
    const std::string name = "mgmdRouterInterface";
    d.table(
        {.name = "mgmdRouterInterfaceTable",
         .show = "show debugging igmp snmp interface {int} {int} [{word}]",
         .key = {kInteger, kInteger},
         .rows = rows_of(routers_,
                         {{3, name + "Querier", querier},
                          {4, name + "QueryInterval", &Router::query_interval},
                          {5, name + "Status", 1},  // active
                          {6, name + "Version", &Router::version},
                          {7, name + "QueryMaxResponseTime", &Router::max_response},
                          {8, name + "QuerierUpTime", [this](const Router& r) { return uptime() - r.created; }},
                          {9, name + "QuerierExpiryTime", querier_expiry},
                          {10, name + "WrongVersionQueries", 0},
                          {11, name + "Joins", &Router::joins},
                          {12, name + "ProxyIfIndex", 0},
                          {13, name + "Groups", groups_on},
                          {14, name + "Robustness", &Router::robustness},
                          {15, name + "LastMemberQueryInterval", &Router::last_member_interval},
                          {16, name + "LastMemberQueryCount", &Router::robustness},
                          {17, name + "StartupQueryCount", &Router::robustness},
                          {18, name + "StartupQueryInterval", [](const Router& r) { return r.query_interval / 4; }}})
                     .ending({kIgmpType})});

    // Rows of a VLAN without an interface have no values.
    const auto routed = [this](auto value, std::size_t interface_at = kGroup) {
        return [this, value, interface_at](const auto& row, const Index& index) {
            const auto router = routers_.find(index[interface_at]);
            using Result = decltype(value(row, router->second));
            return router != routers_.end() ? std::optional<Result>(value(row, router->second)) : std::nullopt;
        };
    };
    const auto expires = routed([this](const Members& members, const Router& r) { return expiry(members, r); });
    const auto never = routed([](const Members&, const Router&) { return Duration(); });
    d.table({.name = "mgmdRouterCacheTable",
             .show = "show debugging igmp snmp group {int} {address} {int} [{word}]",
             .key = {kAddress, kInteger},
             .rows = rows_of(groups_,
                             {{4, "mgmdRouterCacheLastReporter",
                               routed([](const Members& members, const Router&) { return last(members).reporter; })},
                              {5, "mgmdRouterCacheUpTime", routed([this](const Members& members, const Router&) {
                                   return uptime() - first(members).since;
                               })},
                              {6, "mgmdRouterCacheExpiryTime", expires},
                              {7, "mgmdRouterCacheExcludeModeExpiryTimer", never},
                              {8, "mgmdRouterCacheVersion1HostTimer", never},
                              {9, "mgmdRouterCacheVersion2HostTimer", never},
                              // include; exclude, of no source, for what is configured
                              {10, "mgmdRouterCacheSourceFilterMode", routed([](const Members& members, const Router&) {
                                   return any_configured(members) ? 2 : 1;
                               })}})});
    d.table({.name = "mgmdInverseRouterCacheTable",
             .show = "show debugging igmp snmp inv group {int} {int} {address} [{word}]",
             .key = {kInteger, kAddress},
             .rows = rows_of(by_interface_, {{3, "mgmdInverseRouterCacheAddress",
                                              routed([](const Value& group, const Router&) { return group; }, 0)}})});
    d.table({.name = "mgmdRouterSrcListTable",
             .show = "show debugging igmp snmp source {int} {address} {int} {address} [{word}]",
             .key = {kAddressesOnInterface},
             .rows = rows_of(sources_, {{5, "mgmdRouterSrcListExpire", expires}})});
}

// --- Limits and access lists -----------------------------------------------------------------------------------------

void GroupMembership::add_access(Description& d, Access& access) {
    const KeyLayout with_type({kInteger}, 8);
    const auto name = [&access](const char* object) { return std::string(access.tables) + object; };
    const auto show = [&access](const char* what) {
        return fmt::format("show debugging {} snmp {} {{int}} {}", access.show, what, access.type);
    };
    d.table({.name = name("LimitTable"),
             .show = show("limit"),
             .key = with_type,
             .rows = rows_of(access.limits, {{3, name("Limit"), [](std::uint32_t limit) { return limit; }}})});
    d.table({.name = name("AccGrpTable"),
             .show = show("access-group"),
             .key = with_type,
             .rows = rows_of(access.lists, {{1, name("AccGrpIfIndex"), from_index()},
                                            {2, name("AccGrpType"), static_cast<int>(access.type[0] - '0')},
                                            {3, name("AccessGroup"), [](const std::string& list) { return list; }},
                                            {4, name("AccGrpStatus"), 1}})});  // active

    const Lines<Interface> interface = vlan_interfaces_.lines(d);
    const std::string line = access.limit_line;
    interface.line(line + " {1..2048}", [&access](Interface&, const Arguments& arguments, const Entered& entered) {
        access.limits[entered.object] = arguments[0].number;
    });
    interface.line("no " + line, [&access](Interface&, const Arguments&, const Entered& entered) {
        access.limits.erase(entered.object);
    });
}

void GroupMembership::describe(Description& d) {
    add_router_tables(d);
    const Lines<Router> router = vlan_interfaces_.lines(d).of(routers_);
    router.number("ip igmp query-interval {1..31744}", &Router::query_interval);
    router.number("ip igmp version {1..3}", &Router::version);
    router.number("ip igmp query-max-response-time {10..250}", &Router::max_response);
    router.number("ip igmp robustness-variable {1..7}", &Router::robustness);
    router.number("ip igmp last-member-query-interval {10..250}", &Router::last_member_interval);

    add_access(d, igmp_);
    add_access(d, mld_);
    // There is no line for MLD's access list.
    const Lines<Interface> interface = vlan_interfaces_.lines(d);
    interface.line("ip igmp access-group {word}",
                   [this](Interface&, const Arguments& arguments, const Entered& entered) {
                       require(arguments[0].text.size() <= kLongestAccessList,
                               fmt::format("the name of an access list has at most {} octets", kLongestAccessList));
                       igmp_.lists[entered.object] = arguments[0].text;
                   });
    interface.line("no ip igmp access-group", [this](Interface&, const Arguments&, const Entered& entered) {
        require(igmp_.lists.erase(entered.object) != 0, "there is no access group");
    });
}

void add_group_membership(Switch& areas) { areas.area<GroupMembership>(); }

}  // namespace sw
