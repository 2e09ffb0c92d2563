// What the agent, the library and the simulated switch cost together in a walk of everything by GETBULK, for a varbind.
//
//     bench_agent             nanoseconds and allocations
//     bench_agent --count     under callgrind with --collect-atstart=no: prints the varbinds of what is collected
#include "agent/responder.h"
#include "services/services.h"
#include "switch/simulated_switch.h"
#include "tool/session.h"

#include <valgrind/callgrind.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string_view>

namespace {

std::size_t allocations = 0;

constexpr std::int32_t kRepetitions = 25;
constexpr int kWalks = 20;

// Walks everything; how many varbinds there are.
std::size_t walk(agent::Responder& responder) {
    std::size_t varbinds = 0;
    agent::Message request{agent::kVersion2c, "public", agent::kGetBulkRequest, 1, 0, kRepetitions, {{{1, 3}, {}}}};
    while (true) {
        const agent::ber::Octets datagram = agent::encode(request);
        CALLGRIND_TOGGLE_COLLECT;
        const std::size_t before = allocations;
        const auto octets = responder.respond(datagram);
        const std::size_t made = allocations - before;
        CALLGRIND_TOGGLE_COLLECT;
        if (!octets) throw std::runtime_error("no response");
        const agent::Message response = agent::decode(*octets);
        allocations = before + made;  // those of the client do not count
        if (response.error_status != agent::kNoError) throw std::runtime_error("an error in a walk");
        for (const agent::Varbind& varbind : response.varbinds) {
            if (varbind.value.is_exception()) return varbinds;
            ++varbinds;
        }
        request.varbinds[0].name = response.varbinds.back().name;
    }
}

}  // namespace

void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

int main(int argc, char** argv) try {
    using Clock = std::chrono::steady_clock;
    tool::Session session(SWITCHMIB_LIBRARY);
    sw::SimulatedSwitch simulated({{}, [](const std::string&) {}});
    services::services().backend = &simulated;
    agent::Engine engine(session.registry());
    agent::Responder responder(engine, {});
    if (argc == 2 && std::string_view(argv[1]) == "--count") {
        std::printf("%zu\n", walk(responder));
        return 0;
    }
    walk(responder);  // the first one binds symbols
    allocations = 0;
    std::size_t varbinds = 0;
    const auto start = Clock::now();
    for (int i = 0; i < kWalks; ++i) varbinds += walk(responder);
    const auto count = static_cast<double>(varbinds);
    std::printf("%zu varbinds: %.0f ns, %.2f allocations each\n", varbinds / kWalks,
                std::chrono::duration<double, std::nano>(Clock::now() - start).count() / count,
                static_cast<double>(allocations) / count);
} catch (const std::exception& error) {
    std::fprintf(stderr, "bench_agent: %s\n", error.what());
    return 1;
}
