#include "services/index_text.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <span>

namespace services {
namespace {

// Kinds of index conversion, as framework/index.h numbers them.
enum : std::uint8_t {
    kFixedString = 0,
    kInteger = 2,
    kMac = 6,
    kInetText = 7,
    kObjectId = 8,
    kAddress = 10,
    kPrefix = 11,
    kPairOnInterface = 12,
    kAddressPair = 13,
    kCountedString = 14,
};

using Text = std::optional<std::string>;

int family_of(std::uint32_t type, std::size_t length) {
    return type == 1 && length == 4 ? AF_INET : type == 2 && length == 16 ? AF_INET6 : AF_UNSPEC;
}

Text address_text(std::uint32_t type, std::span<const std::uint8_t> octets) {
    if (type == 0 && octets.empty()) return "none";
    const int family = family_of(type, octets.size());
    char text[INET6_ADDRSTRLEN];
    if (family == AF_UNSPEC || inet_ntop(family, octets.data(), text, sizeof text) == nullptr) return std::nullopt;
    return text;
}

Text octets_text(std::span<const std::uint8_t> octets) { return fmt::format("{:02x}", fmt::join(octets, ":")); }

// Texts of one field, with a separator; none when one of them is missing.
Text join(const Text& first, char separator, const Text& second) {
    return first && second ? Text(*first + separator + *second) : std::nullopt;
}

// Takes sub-identifiers from the front of an index. Once something does not fit, `failed` stays set.
struct Reader {
    std::span<const oid> ids;
    bool failed = false;

    oid number() {
        if (ids.empty()) {
            failed = true;
            return 0;
        }
        const oid id = ids.front();
        ids = ids.subspan(1);
        return id;
    }
    std::vector<std::uint8_t> octets(std::size_t count) {
        std::vector<std::uint8_t> taken;
        for (std::size_t i = 0; i < count && !failed; ++i) {
            const oid id = number();
            failed = failed || id > 0xff;
            taken.push_back(static_cast<std::uint8_t>(id));
        }
        return taken;
    }
    Text address(oid type) { return address_text(type, octets(number())); }
    Text address() { return address(number()); }
    Text counted_ids() {
        const oid count = number();
        if (count == 0 || count > ids.size()) return std::nullopt;
        Text text = fmt::format("{}", fmt::join(ids.first(count), "."));
        ids = ids.subspan(count);
        return text;
    }
};

Text take(const IndexField& field, Reader& index) {
    switch (field.kind) {
        case kInteger: return std::to_string(index.number());
        case kFixedString:
        case kMac: return octets_text(index.octets(field.octets));
        case kCountedString: return octets_text(index.octets(index.number()));
        case kObjectId: return index.counted_ids();
        case kAddress: return index.address();
        case kInetText:
        case kPrefix: {
            const Text address = index.address();
            return join(address, '/', std::to_string(index.number()));
        }
        case kPairOnInterface: {
            const oid type = index.number();
            const Text first = index.address(type);
            const Text ifindex = std::to_string(index.number());
            return join(join(first, ' ', ifindex), ' ', index.address(type));
        }
        case kAddressPair: {
            const Text first = index.address();
            return join(first, ' ', index.address());
        }
        default: return std::nullopt;
    }
}

template <class Record>
Record load(const std::uint8_t* octets) {
    Record record;
    std::memcpy(&record, octets, sizeof record);
    return record;
}

Text text_of(const InetAddress& address) {
    return address_text(address.type, {address.octets, std::min<std::size_t>(address.length, sizeof address.octets)});
}

Text key_field(const IndexField& field, const std::uint8_t* at) {
    switch (field.kind) {
        case kInteger:
        case kObjectId: return std::to_string(load<std::uint32_t>(at));
        case kFixedString:
        case kMac:
        case kCountedString: return octets_text({at, field.octets});
        case kInetText: {
            const auto prefix = load<InetText>(at);
            return fmt::format("{}/{}", std::string_view(prefix.text, strnlen(prefix.text, sizeof prefix.text)),
                               prefix.prefix_length);
        }
        case kAddress: return text_of(load<InetAddress>(at));
        case kPrefix: {
            const auto prefix = load<InetPrefix>(at);
            return join(text_of(prefix.address), '/', std::to_string(prefix.length));
        }
        case kPairOnInterface: {
            const auto pair = load<InetPairOnInterface>(at);
            return join(join(text_of(pair.first), ' ', std::to_string(pair.ifindex)), ' ', text_of(pair.second));
        }
        case kAddressPair:
            return join(text_of(load<InetAddress>(at)), ' ', text_of(load<InetAddress>(at + sizeof(InetAddress))));
        default: return std::nullopt;
    }
}

std::optional<oid> number_in(std::string_view text) {
    oid number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

bool append(Oid& ids, const std::optional<Oid>& more) {
    if (more) ids.insert(ids.end(), more->begin(), more->end());
    return more.has_value();
}

// Type, length and octets; without the type for the second of a pair that shares it.
std::optional<Oid> address_ids(std::string_view text, bool with_type = true) {
    std::array<std::uint8_t, 16> octets{};
    const std::string terminated(text);
    oid type = 0;
    std::size_t length = 0;
    if (inet_pton(AF_INET, terminated.c_str(), octets.data()) == 1) {
        type = 1;
        length = 4;
    } else if (inet_pton(AF_INET6, terminated.c_str(), octets.data()) == 1) {
        type = 2;
        length = 16;
    } else if (text != "none") {
        return std::nullopt;
    }
    Oid ids;
    if (with_type) ids.push_back(type);
    ids.push_back(static_cast<oid>(length));
    ids.insert(ids.end(), octets.begin(), octets.begin() + static_cast<std::ptrdiff_t>(length));
    return ids;
}

std::optional<Oid> prefix_ids(std::string_view text) {
    const std::size_t slash = text.rfind('/');
    if (slash == std::string_view::npos) return std::nullopt;
    const auto length = number_in(text.substr(slash + 1));
    auto ids = address_ids(text.substr(0, slash));
    if (!ids || !length) return std::nullopt;
    ids->push_back(*length);
    return ids;
}

// Octets as pairs of hex digits with a colon or hyphen between them.
std::optional<Oid> octet_ids(std::string_view text) {
    Oid ids;
    while (!text.empty()) {
        std::uint8_t octet = 0;
        const auto [stop, error] =
            std::from_chars(text.data(), text.data() + std::min<std::size_t>(2, text.size()), octet, 16);
        if (error != std::errc()) return std::nullopt;
        ids.push_back(octet);
        text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
        if (text.empty()) break;
        if (text.size() == 1 || (text.front() != ':' && text.front() != '-')) return std::nullopt;
        text.remove_prefix(1);
    }
    return ids;
}

std::optional<Oid> dotted_ids(std::string_view text) {
    Oid ids;
    while (true) {
        const std::size_t dot = text.find('.');
        const auto id = number_in(text.substr(0, dot));
        if (!id) return std::nullopt;
        ids.push_back(*id);
        if (dot == std::string_view::npos) return ids;
        text.remove_prefix(dot + 1);
    }
}

std::vector<std::string_view> words_of(std::string_view text) {
    std::vector<std::string_view> words;
    while (true) {
        const std::size_t end = text.find(' ');
        words.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return words;
        text.remove_prefix(end + 1);
    }
}

std::size_t alignment_of(const IndexField& field) {
    return field.kind == kFixedString || field.kind == kMac || field.kind == kCountedString ? 1
                                                                                            : alignof(std::uint32_t);
}

}  // namespace

std::string kind_name(const IndexField& field) {
    switch (field.kind) {
        case kInteger: return "integer";
        case kFixedString: return fmt::format("{} octets", field.octets);
        case kCountedString: return fmt::format("string of {} octets", field.octets);
        case kMac: return "MAC address";
        case kObjectId: return "OID";
        case kAddress: return "address";
        case kInetText:
        case kPrefix: return "prefix";
        case kPairOnInterface: return "address interface address";
        case kAddressPair: return "address pair";
        default: return fmt::format("kind {}", field.kind);
    }
}

std::optional<std::vector<std::string>> index_parts(const std::vector<IndexField>& fields, const oid* ids,
                                                    std::size_t count) {
    Reader index{{ids, count}};
    std::vector<std::string> parts;
    for (const IndexField& field : fields) {
        Text part = take(field, index);
        if (!part || index.failed) return std::nullopt;
        parts.push_back(std::move(*part));
    }
    return index.ids.empty() ? std::optional(std::move(parts)) : std::nullopt;
}

std::vector<std::size_t> key_offsets(const std::vector<IndexField>& fields) {
    std::vector<std::size_t> offsets;
    std::size_t end = 0;
    for (const IndexField& field : fields) {
        const std::size_t alignment = alignment_of(field);
        offsets.push_back((end + alignment - 1) / alignment * alignment);
        end = offsets.back() + field.octets;
    }
    return offsets;
}

std::optional<std::vector<std::string>> key_parts(const std::vector<IndexField>& fields, const void* key,
                                                  std::size_t size) {
    std::vector<std::string> parts;
    const std::vector<std::size_t> offsets = key_offsets(fields);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (offsets[i] + fields[i].octets > size) return std::nullopt;
        Text part = key_field(fields[i], static_cast<const std::uint8_t*>(key) + offsets[i]);
        if (!part) return std::nullopt;
        parts.push_back(std::move(*part));
    }
    return parts;
}

std::optional<Oid> index_from_text(const IndexField& field, std::string_view text) {
    Oid ids;
    switch (field.kind) {
        case kInteger:
            if (const auto number = number_in(text)) return Oid{*number};
            return std::nullopt;
        case kFixedString:
        case kMac: {
            auto octets = octet_ids(text);
            return octets && octets->size() == field.octets ? octets : std::nullopt;
        }
        case kCountedString:
        case kObjectId: {
            const auto counted = field.kind == kObjectId ? dotted_ids(text) : octet_ids(text);
            if (counted) ids.push_back(static_cast<oid>(counted->size()));
            return append(ids, counted) ? std::optional(ids) : std::nullopt;
        }
        case kAddress: return address_ids(text);
        case kInetText:
        case kPrefix: return prefix_ids(text);
        case kPairOnInterface:
        case kAddressPair: {
            const bool on_interface = field.kind == kPairOnInterface;
            const auto words = words_of(text);
            if (words.size() != (on_interface ? 3u : 2u)) return std::nullopt;
            if (!append(ids, address_ids(words.front()))) return std::nullopt;
            if (on_interface && !append(ids, index_from_text({kInteger, 4}, words[1]))) return std::nullopt;
            return append(ids, address_ids(words.back(), !on_interface)) ? std::optional(ids) : std::nullopt;
        }
        default: return std::nullopt;
    }
}

}  // namespace services
