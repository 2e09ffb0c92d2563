// The switch as its areas see it. An area is one file that owns its state and declares its tables, scalars, lookups and
// lines in describe(); what concerns others is an event.
#pragma once

#include "switch/command_line.h"
#include "switch/simulated_switch.h"
#include "switch/table_store.h"
#include "switch/values.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace sw {

// Interface indexes are these and a tunnel's number, a VLAN's id, a port's number.
constexpr std::uint32_t kTunnelIfIndexBase = 896;
constexpr std::uint32_t kVlanIfIndexBase = 1024;
constexpr std::uint32_t kPortIfIndexBase = 5120;
constexpr std::uint32_t kUplinkPort = 25;  // to the routers and the other switches
constexpr std::uint32_t kUplink = kPortIfIndexBase + kUplinkPort;
constexpr std::uint32_t kLastVlan = 4094;
constexpr std::uint32_t kComponent = 1;  // of the bridge, where an index names it

// What an area declares.
class Description {
public:
    Description(TableStore& store, CommandLine& lines) : store_(store), lines_(lines) {}

    void table(Table table) { store_.add(std::move(table)); }
    // What writers ask for without a key: the numbers and MAC addresses of the command are the row's index, or what `row`
    // makes of the command.
    void lookup(std::string show, Rows rows, LookedUp row = {}) {
        store_.add_lookup(std::move(show), std::move(rows), std::move(row));
    }
    // Scalars of a group, shown by one command except where a scalar has its own.
    void scalars(const std::string& group, const std::string& show, std::vector<Scalar> scalars) {
        store_.add(group, show, std::move(scalars));
    }
    // Lines that are for an area as a whole, in global mode or another one.
    template <class Owner>
    Lines<Owner> lines(Owner& area, Mode mode = kGlobal) {
        return {lines_, {mode}, [&area](const Entered&) -> Owner& { return area; }};
    }
    // Lines of a mode's objects. Areas give others the lines of theirs, as Ports::lines() does.
    template <class Object>
    Lines<Object> lines(std::vector<Mode> modes, typename Lines<Object>::Find find,
                        typename Lines<Object>::Changed changed = {}) {
        return {lines_, std::move(modes), std::move(find), std::move(changed)};
    }

private:
    TableStore& store_;
    CommandLine& lines_;
};

class Switch;

class Area {
public:
    explicit Area(Switch& its_switch) : switch_(its_switch) {}
    virtual ~Area() = default;
    Area(const Area&) = delete;
    Area& operator=(const Area&) = delete;

    virtual void describe(Description&) = 0;

    // Events. What has been made is there already, and what has been removed is gone.
    virtual void interface_made(std::uint32_t /*ifindex*/) {}
    virtual void interface_removed(std::uint32_t /*ifindex*/) {}
    virtual void interface_went(std::uint32_t /*ifindex*/, bool /*up*/) {}
    // An interface gets its first address in a network, a prefix as in an index, or loses its last one.
    virtual void network_made(std::uint32_t /*vrf*/, std::uint32_t /*ifindex*/, const Index& /*prefix*/) {}
    virtual void network_removed(std::uint32_t /*vrf*/, std::uint32_t /*ifindex*/, const Index& /*prefix*/) {}
    virtual void port_changed(std::uint32_t /*ifindex*/) {}  // in what is set for it
    virtual void vlan_made(std::uint32_t /*vid*/) {}
    virtual void vlan_removed(std::uint32_t /*vid*/) {}

protected:
    Duration uptime() const;
    Switch& switch_;
};

// The areas and what they share.
class Switch {
public:
    Switch(std::function<Duration()> clock, const Size& size) : uptime_(std::move(clock)), size_(size) {}

    // The area of a type, made when it is asked for the first time: an area's constructor looks up those that it needs.
    // Throws std::logic_error where two areas need each other in their constructors.
    template <class A>
    A& area() {
        const auto [entry, missing] = by_type_.try_emplace(typeid(A), nullptr);
        if (missing) {
            auto made = std::make_unique<A>(*this);
            by_type_[typeid(A)] = made.get();
            areas_.push_back(std::move(made));
        }
        Area* area = by_type_[typeid(A)];
        if (area == nullptr) throw std::logic_error(std::string("areas that need each other: ") + typeid(A).name());
        return static_cast<A&>(*area);
    }

    template <class... Parameters, class... Arguments>
    void announce(void (Area::*event)(Parameters...), Arguments... arguments) {
        for (const std::unique_ptr<Area>& area : areas_) (*area.*event)(arguments...);
    }

    // What the switch comes with was there from the start: until then this is 0.
    Duration uptime() const { return started_ ? uptime_() : Duration(); }
    void start() { started_ = true; }
    const Size& size() const { return size_; }
    const std::vector<std::unique_ptr<Area>>& areas() const { return areas_; }

private:
    std::function<Duration()> uptime_;
    bool started_ = false;
    Size size_;
    std::vector<std::unique_ptr<Area>> areas_;
    std::unordered_map<std::type_index, Area*> by_type_;
};

inline Duration Area::uptime() const { return switch_.uptime(); }

}  // namespace sw
