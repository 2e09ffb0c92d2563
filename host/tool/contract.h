// `mibhost contract`: what the library asks of its backend and sends to it, object by object, found by running it.
//
// The contract is a list of entries. A module's entry comes before its groups', a group's requests before its objects, an
// object before its writes and refusals. An entry says what it is by "entry":
//
//     module    a registration, with the number of objects
//     table     a group of objects, with the key that its requests have: the fields, or where requests have a record
//     scalars   of their own in place of the key, what each part of the record becomes in the index ("part", from 1)
//     request   a show request that reads of the group cause: "for" a scalar, the "first row" or a "row", in a "vrf" or
//               with a "context" where that makes a difference; "columns" are magics, "request" is its name
//     object    one object; "answers" says who answers it: the backend, the library by itself, or nobody ("never"); what
//               a SET "takes", where it has a write method
//     write     values that the object takes: a number, "LOW..HIGH", a text, "any text", or octets with zeros up to a
//               size; what the write method "asks", with the answers in which it does this, and what it "sends"
//     refusal   what is refused, its error, the phase, and what was sent nevertheless; after a "refused line" the lines
//               that follow it
//     example   a SET of several varbinds, with what it asks and sends
//
// In lines that name the value <value> is in its place, or <value-2^32> where a signed format makes that of it.
#pragma once

#include "services/library.h"
#include "tool/format.h"
#include "tool/list.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tool {

// The contract of these objects, the library's among them. Needs a library with names. Owns services() meanwhile.
std::vector<Json> contract(const services::Registry& registry, const services::Library& library,
                           const std::vector<const services::Object*>& objects);

// The entries as text for people, or as Markdown; as JSON there is one on a line.
std::string contract_text(const std::vector<Json>& entries, ListForm form);

}  // namespace tool
