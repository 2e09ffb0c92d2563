// The log of the multicast modules. Every step of a read and a write is traced; `$` separates a line's fields, and the
// source line is one of them.
#pragma once

#include "framework/host.h"
#include "framework/table.h"
#include "framework/write.h"

#define LOG_TRACE(...) anprintf(62, 0, 101, 0, __VA_ARGS__)
#define LOG_ERROR(...) anprintf(62, 0, 104, 0, __VA_ARGS__)

// Ends the writer with the error of a step that failed, and logs it. Which refusals are logged, and how, differs from
// writer to writer; log filters rely on them.
#define TRY_LOGGED(step, text)                                               \
    do {                                                                     \
        if (const ::switchmib::Error failed_ = (step); failed_ != noError) { \
            LOG_ERROR(text "$%s$%d\n", set.caller, __LINE__);                \
            return failed_;                                                  \
        }                                                                    \
    } while (false)

namespace switchmib {

// The line that enters an interface. The lookup may fail: the backend then refuses the empty name.
inline Command enter_line(std::uint32_t ifindex) {
    InterfaceName name;
    static_cast<void>(Set::interface_name(ifindex, name));
    return {"interface %s", name.text};
}

}  // namespace switchmib
