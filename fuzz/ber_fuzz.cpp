// Any datagram to an agent with its own groups: it is dropped, or answered with a response to exactly that request.
#include "agent/responder.h"
#include "agent/standard_groups.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::size_t kMaxResponse = 1472;

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "ber_fuzz: %s\n", what);
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static agent::StandardGroups groups({}, [] { return std::chrono::milliseconds(0); });
    static const services::Registry registry{agent::StandardGroups::registrations()};
    static agent::Engine engine(registry);
    static agent::Responder responder(engine, {"public", "private", kMaxResponse});
    groups.counters = &responder.counters();

    const auto octets = responder.respond({data, size});
    if (!octets) return 0;
    require(octets->size() <= kMaxResponse, "the response is larger than allowed");
    const agent::Message request = agent::decode({data, size});
    const agent::Message response = agent::decode(*octets);
    require(response.pdu == agent::kResponse, "the answer is not a response");
    require(response.version == request.version && response.community == request.community &&
                response.request_id == request.request_id,
            "the response is one to another request");
    require(agent::encode(response) == *octets, "the response is not encoded as it decodes");
    return 0;
}
