#include "support/fake_proc.h"

#include <dlfcn.h>
#include <sys/sysinfo.h>

#include <cerrno>
#include <cstdio>

namespace tests {
namespace {

FakeProc* standing = nullptr;

// libc's own function of that name.
template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

FakeProc::FakeProc() {
    static long hour = 0;
    uptime = 3600 * ++hour;
    standing = this;
}

FakeProc::~FakeProc() { standing = nullptr; }

}  // namespace tests

extern "C" std::FILE* fopen(const char* path, const char* mode) {
    using tests::standing;
    const bool in_proc = std::string(path).starts_with("/proc/");
    if (standing == nullptr || (!in_proc && !standing->files.contains(path)))
        return tests::next<std::FILE*(const char*, const char*)>("fopen")(path, mode);
    ++standing->opened[path];
    const auto file = standing->files.find(path);
    if (file != standing->files.end()) return fmemopen(file->second.data(), file->second.size(), mode);
    errno = ENOENT;
    return nullptr;
}

extern "C" int sysinfo(struct sysinfo* info) noexcept {
    using tests::standing;
    if (standing == nullptr) return tests::next<int(struct sysinfo*)>("sysinfo")(info);
    if (!standing->has_uptime) return -1;
    *info = {};
    info->uptime = standing->uptime;
    return 0;
}
