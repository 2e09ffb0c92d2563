// The small numbers of SNMP that the modules use, under the field's own names; as C11 and as C++, where they are in the
// namespace switchmib. Integrators get this header installed.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
#define SWITCHMIB_U8 : uint8_t
#define SWITCHMIB_U16 : uint16_t
#define SWITCHMIB_INT : int
#define SWITCHMIB_NODISCARD [[nodiscard]]
namespace switchmib {
#else  // C11 has none of these
#define SWITCHMIB_U8
#define SWITCHMIB_U16
#define SWITCHMIB_INT
#define SWITCHMIB_NODISCARD
#endif

enum Asn SWITCHMIB_U8 {
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

enum Access SWITCHMIB_U16 { ReadOnly = 1, ReadWrite = 2 };

// The phases of a SET, as the host numbers them.
enum Phase SWITCHMIB_INT { reserve1 = 0, reserve2 = 1, action = 2, commit = 3, release = 4, undo = 5 };

// Error-status numbers that write methods return.
enum SWITCHMIB_NODISCARD Error SWITCHMIB_INT{
    noError = 0,     noSuchName = 2,         genErr = 5,       wrongType = 7, wrongLength = 8,
    wrongValue = 10, inconsistentValue = 12, notWritable = 17,
};

enum RowStatus SWITCHMIB_INT {
    active = 1,
    notInService = 2,
    notReady = 3,
    createAndGo = 4,
    createAndWait = 5,
    destroy = 6,
};

#ifdef __cplusplus
}  // namespace switchmib
#endif
