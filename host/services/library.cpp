#include "services/library.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace services {
namespace {

constexpr std::string_view kInitSuffix = "_snmp_init";

// The file's bytes; every access is checked against its end.
class File {
public:
    explicit File(const std::string& path) {
        std::ifstream stream(path, std::ios::binary);
        if (!stream) throw std::runtime_error(path + ": cannot be read");
        bytes_.assign(std::istreambuf_iterator<char>(stream), {});
    }

    template <class Record>
    Record at(std::uint64_t offset) const {
        if (offset > bytes_.size() || sizeof(Record) > bytes_.size() - offset)
            throw std::runtime_error("its ELF headers point behind its end");
        Record record;
        std::memcpy(&record, bytes_.data() + offset, sizeof record);
        return record;
    }

    std::string text_at(std::uint64_t offset) const {
        if (offset >= bytes_.size()) throw std::runtime_error("its ELF headers point behind its end");
        const char* text = bytes_.data() + offset;
        return std::string(text, strnlen(text, bytes_.size() - static_cast<std::size_t>(offset)));
    }

private:
    std::vector<char> bytes_;
};

template <class Header, class Section, class Symbol>
std::vector<std::string> exports_of(const File& file) {
    const auto header = file.at<Header>(0);
    const auto section_at = [&](std::uint64_t index) {
        return file.at<Section>(header.e_shoff + index * sizeof(Section));
    };
    std::vector<std::string> names;
    for (unsigned i = 0; i < header.e_shnum; ++i) {
        const auto section = section_at(i);
        if (section.sh_type != SHT_DYNSYM) continue;
        const auto strings = section_at(section.sh_link);
        for (std::uint64_t at = 0; at + sizeof(Symbol) <= section.sh_size; at += sizeof(Symbol)) {
            const auto symbol = file.at<Symbol>(section.sh_offset + at);
            // ELF32 and ELF64 pack binding and visibility the same way. Absolute symbols are names of versions.
            const auto binding = ELF64_ST_BIND(symbol.st_info);
            const auto visibility = ELF64_ST_VISIBILITY(symbol.st_other);
            const bool defined = symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS;
            if (defined && (binding == STB_GLOBAL || binding == STB_WEAK) &&
                (visibility == STV_DEFAULT || visibility == STV_PROTECTED))
                names.push_back(file.text_at(strings.sh_offset + symbol.st_name));
        }
    }
    std::ranges::sort(names);
    return names;
}

std::vector<std::string> read_exports(const std::string& path) {
    const File file(path);
    switch (file.at<unsigned char>(EI_CLASS)) {
        case ELFCLASS32: return exports_of<Elf32_Ehdr, Elf32_Shdr, Elf32_Sym>(file);
        case ELFCLASS64: return exports_of<Elf64_Ehdr, Elf64_Shdr, Elf64_Sym>(file);
        default: throw std::runtime_error("it is neither a 32-bit nor a 64-bit ELF file");
    }
}

// The file that the loader found, which may have searched for it.
std::string file_of(void* handle, const std::string& path) {
    link_map* map = nullptr;
    return dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 && *map->l_name != '\0' ? map->l_name : path;
}

}  // namespace

Library::Library(const std::string& path) : path_(path), handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) {
        const char* reason = dlerror();
        throw std::runtime_error("cannot load " + path + ": " + (reason != nullptr ? reason : "unknown reason"));
    }
    try {
        exports_ = read_exports(file_of(handle_, path));
        if (std::ranges::none_of(exports_, [](const std::string& name) { return name.ends_with(kInitSuffix); }))
            throw std::runtime_error("it exports no *" + std::string(kInitSuffix) + " function");
    } catch (const std::exception& error) {
        dlclose(handle_);
        throw std::runtime_error("cannot use " + path + ": " + error.what());
    }
}

Library::~Library() { dlclose(handle_); }

void Library::initialise() {
    for (const std::string& name : exports_)
        if (name.ends_with(kInitSuffix)) reinterpret_cast<void (*)()>(symbol(name))();
}

void* Library::symbol(const std::string& name) const {
    // The loader would look into the library's own dependencies too.
    return std::ranges::binary_search(exports_, name) ? dlsym(handle_, name.c_str()) : nullptr;
}

}  // namespace services
