// The small numbers of SNMP that the modules speak in, under the field's own names.
#pragma once

#include <cstdint>

namespace switchmib {

enum Asn : std::uint8_t {
    Integer = 0x02,
    OctetString = 0x04,
    ObjectIdentifier = 0x06,
    IpAddress = 0x40,
    Counter32 = 0x41,
    Gauge32 = 0x42,
    Unsigned32 = 0x42,  // the same tag; each object keeps its published type's name
    TimeTicks = 0x43,
    Counter64 = 0x46,
};

enum Access : std::uint16_t { ReadOnly = 1, ReadWrite = 2 };

// The phases of a SET, as the host numbers them.
enum Phase : int { reserve1 = 0, reserve2 = 1, action = 2, commit = 3, release = 4, undo = 5 };

// Error-status numbers that write methods answer.
enum Error : int {
    noError = 0,
    noSuchName = 2,
    genErr = 5,
    wrongType = 7,
    wrongLength = 8,
    wrongValue = 10,
    inconsistentValue = 12,
    notWritable = 17,
};

enum RowStatus : std::int32_t {
    active = 1,
    notInService = 2,
    notReady = 3,
    createAndGo = 4,
    createAndWait = 5,
    destroy = 6,
};

}  // namespace switchmib
