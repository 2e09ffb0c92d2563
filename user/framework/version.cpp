// The library's version, as the build has it: "1.2.0".
extern "C" {
__attribute__((visibility("default"))) extern const char switchmib_version[];
const char switchmib_version[] = SWITCHMIB_VERSION;
}
