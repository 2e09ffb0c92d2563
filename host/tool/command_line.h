// The commands and options of mibhost: what --help shows, the manual page says and the shell completes.
#pragma once

#include "tool/options.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tool {

class CommandLine {
public:
    CommandLine();
    ~CommandLine();

    // Fills the options from the words after the program's name, and from the file of --config. Returns a text when
    // there is just that to print: help or the version. Throws UsageError.
    std::optional<std::string> parse(const std::vector<std::string>& words);
    const Options& options() const { return options_; }

    std::string manual_page() const;  // troff, of section 1
    std::string bash_completion() const;

private:
    Options options_;
    std::unique_ptr<CLI::App> app_;
};

}  // namespace tool
