#include "services/library.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

extern "C" const ElfW(Ehdr) __ehdr_start __attribute__((visibility("hidden")));  // this program's own, by the linker

namespace services {
namespace {

constexpr std::string_view kInitSuffix = "_snmp_init";

// The file's bytes; every access is checked against its end.
class File {
public:
    explicit File(const std::string& path) {
        std::error_code error;
        const auto status = std::filesystem::status(path, error);
        if (!std::filesystem::exists(status)) throw std::runtime_error("there is no such file");
        if (!std::filesystem::is_regular_file(status)) throw std::runtime_error("it is not a file");
        std::ifstream stream(path, std::ios::binary);
        if (!stream) throw std::runtime_error("it cannot be read");
        bytes_.assign(std::istreambuf_iterator<char>(stream), {});
    }

    std::uint64_t size() const { return bytes_.size(); }

    template <class Record>
    Record at(std::uint64_t offset) const {
        require(offset, sizeof(Record));
        Record record;
        std::memcpy(&record, bytes_.data() + offset, sizeof record);
        return record;
    }

    std::string text_at(std::uint64_t offset) const {
        require(offset, 1);
        const char* text = bytes_.data() + offset;
        return std::string(text, strnlen(text, bytes_.size() - static_cast<std::size_t>(offset)));
    }

    // Throws when the file ends before these octets do.
    void require(std::uint64_t offset, std::uint64_t count) const {
        if (offset > bytes_.size() || count > bytes_.size() - offset) throw std::runtime_error("it is cut short");
    }

private:
    std::vector<char> bytes_;
};

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Section = ElfW(Shdr);
using Symbol = ElfW(Sym);

// Throws with what is wrong with a file that the loader could not map into this process as a whole.
void check_loadable(const File& file) {
    if (file.size() < SELFMAG) throw std::runtime_error("it is not an ELF file");
    if (file.text_at(0).compare(0, SELFMAG, ELFMAG) != 0) throw std::runtime_error("it is not an ELF file");
    const Header& own = __ehdr_start;
    const auto header = file.at<Header>(0);
    const unsigned char bits = header.e_ident[EI_CLASS];
    if ((bits == ELFCLASS32 || bits == ELFCLASS64) && bits != own.e_ident[EI_CLASS])
        throw std::runtime_error(bits == ELFCLASS32 ? "it is for a 32-bit machine, this one has 64 bits"
                                                    : "it is for a 64-bit machine, this one has 32 bits");
    if (bits != own.e_ident[EI_CLASS] || header.e_ident[EI_DATA] != own.e_ident[EI_DATA] ||
        header.e_machine != own.e_machine)
        throw std::runtime_error("it is for another machine (ELF machine " + std::to_string(header.e_machine) +
                                 ", this is " + std::to_string(own.e_machine) + ")");
    if (header.e_type != ET_DYN) throw std::runtime_error("it is not a shared library");
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        const auto segment = file.at<Segment>(header.e_phoff + i * sizeof(Segment));
        if (segment.p_type == PT_LOAD) file.require(segment.p_offset, segment.p_filesz);
    }
}

// The names that a loadable file exports.
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
            // ELF32 and ELF64 pack these alike. Absolute symbols are names of versions.
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

// The file that the loader found, which may have searched for it.
std::string file_of(void* handle, const std::string& path) {
    link_map* map = nullptr;
    return dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 && *map->l_name != '\0' ? map->l_name : path;
}

// Not by memcpy, for there may be memory between the variables that a sanitizer lets nobody touch. A sanitizer also has
// megabytes of its own there, so it goes by blocks.
[[gnu::no_sanitize_address, gnu::noinline]] void copy(const std::uintptr_t* from, std::size_t words,
                                                      std::uintptr_t* to) {
    struct Block {
        std::uintptr_t words[8];
    };
    constexpr std::size_t kBlock = sizeof(Block) / sizeof(std::uintptr_t);
    for (; words >= kBlock; words -= kBlock, from += kBlock, to += kBlock) {
        *reinterpret_cast<Block*>(to) = *reinterpret_cast<const Block*>(from);
        asm volatile("" ::: "memory");  // or the loop becomes a memcpy
    }
    const volatile std::uintptr_t* word = from;
    for (volatile std::uintptr_t* place = to; words > 0; --words) *place++ = *word++;
}

}  // namespace

Library::Library(const std::string& path) : path_(path) {
    if (path.empty()) throw std::runtime_error("the path of the module library is empty");
    try {
        // The loader would map a file that is cut short, and fail later. A name without a slash is for it to find.
        const bool is_path = path.find('/') != std::string::npos;
        if (is_path) read_exports(path);
        // Never unmapped: modules keep what they allocate when they are initialised.
        handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (handle_ == nullptr) {
            const char* reason = dlerror();
            throw std::runtime_error(reason != nullptr ? reason : "the loader gives no reason");
        }
        if (!is_path) read_exports(file_of(handle_, path));
    } catch (const std::exception& error) {
        if (handle_ != nullptr) dlclose(handle_);
        throw std::runtime_error("cannot load " + path + ": " + error.what());
    }
}

void Library::read_exports(const std::string& path) {
    const File file(path);
    check_loadable(file);
    exports_ = exports_of(file);
    if (std::ranges::none_of(exports_, [](const std::string& name) { return name.ends_with(kInitSuffix); }))
        throw std::runtime_error("it exports no *" + std::string(kInitSuffix) + " function");
}

Library::~Library() { dlclose(handle_); }

void Library::initialise() {
    for (const std::string& name : exports_)
        if (name.ends_with(kInitSuffix)) reinterpret_cast<void (*)()>(symbol(name))();
    variables_ = find_variables();
    kept_.resize(variables_.size());
    copy(variables_.data(), kept_.size(), kept_.data());
}

void Library::reset() const { copy(kept_.data(), kept_.size(), variables_.data()); }

void* Library::symbol(const std::string& name) const {
    // The loader would look into the library's own dependencies too.
    return std::ranges::binary_search(exports_, name) ? dlsym(handle_, name.c_str()) : nullptr;
}

std::span<std::uintptr_t> Library::find_variables() const {
    struct Range {
        ElfW(Addr) base, begin, end;
    } range{};
    link_map* map = nullptr;
    if (dlinfo(handle_, RTLD_DI_LINKMAP, &map) != 0) return {};
    range.base = map->l_addr;
    const auto find = [](dl_phdr_info* info, std::size_t, void* found) {
        Range& its = *static_cast<Range*>(found);
        if (info->dlpi_addr != its.base) return 0;
        for (const Segment& segment : std::span(info->dlpi_phdr, info->dlpi_phnum)) {
            const ElfW(Addr) begin = its.base + segment.p_vaddr;
            const ElfW(Addr) end = begin + segment.p_memsz;
            if (segment.p_type == PT_LOAD && (segment.p_flags & PF_W) != 0) {
                if (its.begin == 0) its.begin = begin;
                its.end = end;
            }
            // What is only relocated is constant, and comes first in the writable memory.
            if (segment.p_type == PT_GNU_RELRO) its.begin = end;
        }
        return 1;
    };
    dl_iterate_phdr(find, &range);
    constexpr std::size_t kWord = sizeof(std::uintptr_t);
    range.begin = (range.begin + kWord - 1) / kWord * kWord;
    if (range.begin >= range.end) return {};
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return {reinterpret_cast<std::uintptr_t*>(range.begin), (range.end - range.begin + kWord - 1) / kWord};
}

}  // namespace services
