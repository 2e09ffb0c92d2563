// Drives a fuzz target without a fuzzing engine: with the files it is given, or with mutations of well-formed requests,
// the same ones each time.
//
//     ber_fuzz FILE...      ber_fuzz -runs=N
#include "agent/message.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using agent::ber::Octets;

std::vector<Octets> requests() {
    const agent::Oid name{1, 3, 6, 1, 2, 1, 2, 2, 1, 10, 4294967295};
    const std::vector<agent::Varbind> varbinds{
        {name, {}},
        {name, agent::Value::integer(-129)},
        {name, agent::Value::octet_string(std::vector<std::uint8_t>(200, 'x'))},
        {name, agent::Value::unsigned32(agent::kGauge32, 0x80000000)},
        {name, agent::Value::counter64(0x8000000000000000)},
        {name, agent::Value::object_id(name)},
        {name, {agent::kIpAddress, {192, 0, 2, 1}}},
    };
    std::vector<Octets> requests;
    for (const std::uint8_t pdu :
         {agent::kGetRequest, agent::kGetNextRequest, agent::kSetRequest, agent::kGetBulkRequest})
        for (const auto version : {agent::kVersion1, agent::kVersion2c})
            requests.push_back(
                agent::encode({version, pdu == agent::kSetRequest ? "private" : "public", pdu, 77, 1, 20, varbinds}));
    return requests;
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

int main(int argc, char** argv) {
    static const std::string kRuns = "-runs=";
    std::size_t runs = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.starts_with(kRuns)) {
            runs = std::strtoul(argument.c_str() + kRuns.size(), nullptr, 10);
            continue;
        }
        std::ifstream file(argument, std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "%s: cannot be read\n", argument.c_str());
            return 1;
        }
        const Octets octets{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(octets.data(), octets.size());
    }

    const std::vector<Octets> seeds = requests();
    for (const Octets& seed : seeds) LLVMFuzzerTestOneInput(seed.data(), seed.size());
    Mutator mutator;
    for (std::size_t run = 0; run < runs; ++run) {
        Octets octets = seeds[mutator.below(seeds.size())];
        mutator.mutate(octets);
        octets.shrink_to_fit();  // so that a sanitizer sees a step beyond its end
        LLVMFuzzerTestOneInput(octets.data(), octets.size());
    }
    return 0;
}
