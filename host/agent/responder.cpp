#include "agent/responder.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace agent {
namespace {

// What SNMPv1 calls an SNMPv2 error.
int version1_status(int status) {
    switch (status) {
        case kNoError:
        case kTooBig:
        case kNoSuchName:
        case kBadValue:
        case kReadOnly:
        case kGenErr: return status;
        case kWrongValue:
        case kWrongEncoding:
        case kWrongType:
        case kWrongLength:
        case kInconsistentValue: return kBadValue;
        case kNoAccess:
        case kNotWritable:
        case kNoCreation:
        case kInconsistentName:
        case kAuthorizationError: return kNoSuchName;
        default: return kGenErr;
    }
}

// What goes out for an error of the engine or of a write method.
int sent_status(std::int32_t version, int status) {
    if (version == kVersion1) return version1_status(status);
    return status == kNoSuchName ? static_cast<int>(kNoCreation) : status;
}

Message response_to(const Message& request) {
    return {request.version, request.community, kResponse, request.request_id, 0, 0, {}};
}

// `index` is the failed varbind's, from 1 on; 0: none in particular.
Message error_response(const Message& request, int status, std::size_t index) {
    Message response = response_to(request);
    response.error_status = sent_status(request.version, status);
    response.error_index = static_cast<std::int32_t>(index);
    // Nothing but the request's own varbinds can be too big for a response; SNMPv1 requires them nevertheless.
    if (status != kTooBig || request.version == kVersion1) response.varbinds = request.varbinds;
    return response;
}

// A value that SNMPv1 has no name for.
bool is_unknown_to(std::int32_t version, const ValueView& value) {
    return version == kVersion1 && (value.is_exception() || value.tag == kCounter64);
}

}  // namespace

void ResponderOptions::check() const {
    if (community.empty()) throw std::invalid_argument("the community is empty");
    if (!write_community) return;
    if (write_community->empty())
        throw std::invalid_argument("the write community is empty; leave the option out for no write access");
    if (*write_community == community)
        throw std::invalid_argument("the write community is the community that reads; name another one");
}

// The encoded varbinds of a response, which never grows beyond its limit.
class Responder::Response {
public:
    Response(const Message& request, std::size_t limit, ber::Octets& varbinds)
        : head_(response_to(request)), limit_(limit), varbinds_(varbinds) {
        varbinds_.clear();
    }

    // False, and nothing added, when the varbind does not fit.
    bool add(const VarbindView& varbind) {
        const std::size_t before = varbinds_.size();
        ber::append_varbind(varbinds_, varbind);
        if (encoded_size(head_, varbinds_.size()) <= limit_) {
            ++count_;
            return true;
        }
        varbinds_.resize(before);
        return false;
    }
    std::size_t count() const { return count_; }
    ber::Octets datagram() const { return encode(head_, varbinds_); }

private:
    Message head_;
    std::size_t limit_;
    ber::Octets& varbinds_;
    std::size_t count_ = 0;
};

std::optional<ber::Octets> Responder::respond(std::span<const std::uint8_t> datagram) {
    ++counters_.received;
    const auto drop = [this](std::uint64_t& counter, const std::string& reason) {
        ++counter;
        if (on_dropped) on_dropped(reason);
        return std::nullopt;
    };

    Message request;
    try {
        request = decode(datagram);
        if (request.pdu == kResponse) throw UnsupportedPdu("a response");
    } catch (const UnsupportedVersion& error) {
        return drop(counters_.unsupported_version, error.what());
    } catch (const UnsupportedPdu& error) {
        return drop(counters_.unsupported_pdu, error.what());
    } catch (const ber::Error& error) {
        return drop(counters_.malformed, std::string("malformed: ") + error.what());
    }
    const bool may_write = request.community == options_.write_community;
    if (!may_write && request.community != options_.community)
        return drop(counters_.wrong_community, "a wrong community");

    if (on_message) on_message(request);
    Response response(request, options_.max_response, varbinds_);
    const SetResult result = carry_out(request, may_write, response);
    ber::Octets octets =
        result.status == kNoError ? response.datagram() : encode(error_response(request, result.status, result.index));
    if (octets.size() > options_.max_response) octets = encode(error_response(request, kTooBig, 0));
    if (octets.size() > options_.max_response) return drop(counters_.unanswerable, "a request that no response fits");
    ++counters_.answered;
    if (on_message) on_message(decode(octets));
    return octets;
}

SetResult Responder::carry_out(const Message& request, bool may_write, Response& response) {
    if (request.varbinds.size() > options_.max_varbinds) return {kTooBig, 0};
    switch (request.pdu) {
        case kGetRequest: return get(request, response);
        case kGetNextRequest: return get_next(request, response);
        case kGetBulkRequest: get_bulk(request, response); return {};
        default: return set(request, may_write, response);
    }
}

SetResult Responder::get(const Message& request, Response& response) {
    for (std::size_t i = 0; i < request.varbinds.size(); ++i) {
        const VarbindView found = engine_.look_up(request.varbinds[i].name);
        if (is_unknown_to(request.version, found.value)) return {kNoSuchName, i + 1};
        if (!response.add(found)) return {kTooBig, 0};
    }
    return {};
}

SetResult Responder::get_next(const Message& request, Response& response) {
    for (std::size_t i = 0; i < request.varbinds.size(); ++i) {
        Engine::Walk walk(engine_, request.varbinds[i].name);
        const VarbindView found = walk.next(request.version == kVersion1 ? kCounter64 : kNull);
        if (is_unknown_to(request.version, found.value)) return {kNoSuchName, i + 1};
        if (!response.add(found)) return {kTooBig, 0};
    }
    return {};
}

void Responder::get_bulk(const Message& request, Response& response) {
    const auto count = static_cast<std::ptrdiff_t>(request.varbinds.size());
    const auto non_repeaters = std::clamp<std::ptrdiff_t>(request.error_status, 0, count);
    std::vector<Engine::Walk> walks;
    walks.reserve(request.varbinds.size());
    for (const Varbind& varbind : request.varbinds) walks.emplace_back(engine_, varbind.name);
    // A response that is full ends everything.
    bool have_ended = true;
    const auto add_next = [&](Engine::Walk& walk) {
        if (response.count() == options_.max_bulk_varbinds) return false;
        const VarbindView found = walk.next();
        have_ended = have_ended && found.value.tag == kEndOfMibView;
        return response.add(found);
    };

    const auto repeaters = walks.begin() + non_repeaters;
    if (!std::all_of(walks.begin(), repeaters, add_next)) return;
    for (std::int32_t repetition = 0; repetition < request.error_index; ++repetition) {
        have_ended = true;
        if (!std::all_of(repeaters, walks.end(), add_next) || have_ended) return;
    }
}

SetResult Responder::set(const Message& request, bool may_write, Response& response) {
    if (!may_write) {
        ++counters_.bad_community_uses;
        return {kNoAccess, request.varbinds.empty() ? 0u : 1u};
    }
    // What is set cannot be taken back, so the response must fit before anything is.
    for (const Varbind& varbind : request.varbinds)
        if (!response.add(varbind)) return {kTooBig, 0};
    return engine_.set(request.varbinds);
}

}  // namespace agent
