// Drives a fuzz target without a fuzzing engine: with the files of its corpus, then with mutations of them, the same ones
// each time.
//
//     ber_fuzz [-runs=N] FILE_OR_DIRECTORY...
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Octets = std::vector<std::uint8_t>;

Octets contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error(path.string() + ": cannot be read");
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<Octets> read_corpus(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path)) return {contents(path)};
    std::vector<std::filesystem::path> files(std::filesystem::directory_iterator(path), {});
    std::ranges::sort(files);
    std::vector<Octets> corpus;
    corpus.reserve(files.size());
    for (const auto& file : files) corpus.push_back(contents(file));
    return corpus;
}

class Mutator {
public:
    void mutate(Octets& octets) {
        for (auto steps = 1 + below(4); steps > 0; --steps) step(octets);
    }
    std::size_t below(std::size_t bound) { return random_() % bound; }

private:
    void step(Octets& octets) {
        static constexpr std::array<std::uint8_t, 8> kTelling{0, 1, 0x7f, 0x80, 0x81, 0x84, 0x88, 0xff};
        if (octets.empty()) octets.push_back(0);
        const auto at = octets.begin() + static_cast<std::ptrdiff_t>(below(octets.size()));
        switch (below(6)) {
            case 0: *at = static_cast<std::uint8_t>(*at ^ 1u << below(8)); break;
            case 1: *at = kTelling[below(kTelling.size())]; break;
            case 2: *at = static_cast<std::uint8_t>(random_()); break;
            case 3: octets.insert(at, kTelling[below(kTelling.size())]); break;
            case 4:
                octets.erase(at,
                             at + static_cast<std::ptrdiff_t>(below(static_cast<std::size_t>(octets.end() - at)) % 8));
                break;
            default: octets.resize(static_cast<std::size_t>(at - octets.begin())); break;
        }
    }

    std::mt19937 random_{20};
};

}  // namespace

int main(int argc, char** argv) try {
    static const std::string kRuns = "-runs=";
    std::size_t runs = 0;
    std::vector<Octets> corpus;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.starts_with(kRuns))
            runs = std::strtoul(argument.c_str() + kRuns.size(), nullptr, 10);
        else
            std::ranges::move(read_corpus(argument), std::back_inserter(corpus));
    }
    if (corpus.empty()) throw std::runtime_error("no corpus; name files or directories");

    for (const Octets& octets : corpus) LLVMFuzzerTestOneInput(octets.data(), octets.size());
    Mutator mutator;
    for (std::size_t run = 0; run < runs; ++run) {
        Octets octets = corpus[mutator.below(corpus.size())];
        mutator.mutate(octets);
        octets.shrink_to_fit();  // so that a sanitizer sees a step beyond its end
        LLVMFuzzerTestOneInput(octets.data(), octets.size());
    }
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 1;
}
