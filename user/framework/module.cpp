#include "framework/module.h"

namespace switchmib {

void register_module(const Registration& module, const char* init, const char* source, int line) {
    if (register_mib(module.descr, module.variables, sizeof(VariableEntry), module.entries, module.module_oid,
                     module.module_oid_length) == 0)
        return;
    if (!snmp_get_do_debugging()) return;
    debugmsgtoken("trace", "%s(): %s, %d:\n", init, source, line);
    debugmsg("trace", "%s(): %s, %d:\n", init, source, line);
    debugmsgtoken("register_mib", "%s registration failed\n", module.descr);
    debugmsg("register_mib", "%s registration failed\n", module.descr);
}

}  // namespace switchmib
