// A table's index as text: one part for each index field, an address as an address.
//
//     integer              5121
//     MAC address, string  00:1b:2c:3d:4e:5f
//     OBJECT IDENTIFIER    0.0
//     address, prefix      10.0.0.1, 2001:db8::1; 10.0.0.0/24; "none" for type 0
//     address pair         10.0.0.1 239.1.1.1; with the interface index between the two where the pair has one
#pragma once

#include "services/services.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace services {

using Oid = std::vector<oid>;

// One index field of a table: its kind of index conversion (framework/index.h) and its octets in the key.
struct IndexField {
    std::uint8_t kind;
    std::uint8_t octets;
};

// "integer", "MAC address", ...
std::string kind_name(const IndexField& field);

// The parts of an index, from the sub-identifiers after the column; none when they are not a whole index of these
// fields with addresses of a known type.
std::optional<std::vector<std::string>> index_parts(const std::vector<IndexField>& fields, const oid* ids,
                                                    std::size_t count);
// Where each field is in a key record that is laid out as the fields.
std::vector<std::size_t> key_offsets(const std::vector<IndexField>& fields);
// The parts of a key record. None when the record is not laid out as these fields, or holds an address of no known type
// or length; octets after the fields are not shown.
std::optional<std::vector<std::string>> key_parts(const std::vector<IndexField>& fields, const void* key,
                                                  std::size_t size);
// The sub-identifiers of one part; none when the text is not a value of this kind.
std::optional<Oid> index_from_text(const IndexField& field, std::string_view text);

}  // namespace services
