// Loads the module library as an agent does: dlopen, then every exported `<module>_snmp_init` once, found by its name.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace services {

class Library {
public:
    // Throws std::runtime_error with a message that names the file when it cannot be loaded or exports no init
    // function. A path (with a slash) whose file is cut short, not an ELF file or for another machine is never mapped.
    explicit Library(const std::string& path);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    const std::string& path() const { return path_; }
    // Names of every symbol that the file exports, sorted (from its dynamic symbol table).
    const std::vector<std::string>& exports() const { return exports_; }
    // Calls every `*_snmp_init`, in the order of their names. Registrations appear in services().registrations.
    // What its variables hold then is kept.
    void initialise();
    // Address of an exported symbol, null when there is none.
    void* symbol(const std::string& name) const;
    // Gives its variables the values that they had after initialise(): what earlier requests left is forgotten.
    void reset() const;

private:
    void read_exports(const std::string& path);
    std::span<std::uintptr_t> find_variables() const;

    std::string path_;
    void* handle_ = nullptr;
    std::vector<std::string> exports_;
    std::span<std::uintptr_t> variables_;  // the memory of those that are not constant
    std::vector<std::uintptr_t> kept_;
};

}  // namespace services
