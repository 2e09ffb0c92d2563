#include "agent/responder.h"

#include <algorithm>
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

Message response_to(const Message& request) {
    return {request.version, request.community, kResponse, request.request_id, 0, 0, {}};
}

// `index` is the failed varbind's, from 1 on; 0: none in particular.
Message error_response(const Message& request, int status, std::size_t index) {
    Message response = response_to(request);
    response.error_status = request.version == kVersion1 ? version1_status(status) : status;
    response.error_index = static_cast<std::int32_t>(index);
    // Nothing but the request's own varbinds can be too big for a response; SNMPv1 wants them all the same.
    if (status != kTooBig || request.version == kVersion1) response.varbinds = request.varbinds;
    return response;
}

// A value that SNMPv1 has no name for.
bool is_unknown_to(std::int32_t version, const Value& value) {
    return version == kVersion1 && (value.is_exception() || value.tag == kCounter64);
}

}  // namespace

// A response that grows by varbinds, never beyond its limit.
class Responder::Response {
public:
    Response(const Message& request, std::size_t limit) : message_(response_to(request)), limit_(limit) {}

    // False, and nothing added, when the varbind does not fit.
    bool add(Varbind varbind) {
        const std::size_t octets = octets_ + encoded_size(varbind);
        if (encoded_size(message_, octets) > limit_) return false;
        octets_ = octets;
        message_.varbinds.push_back(std::move(varbind));
        return true;
    }
    Message take() { return std::move(message_); }

private:
    Message message_;
    std::size_t limit_;
    std::size_t octets_ = 0;
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
    Message response = answer(request, may_write);
    ber::Octets octets = encode(response);
    if (octets.size() > options_.max_response) {
        response = error_response(request, kTooBig, 0);
        octets = encode(response);
    }
    if (octets.size() > options_.max_response) return drop(counters_.unanswerable, "a request that no response fits");
    ++counters_.answered;
    if (on_message) on_message(response);
    return octets;
}

Message Responder::answer(const Message& request, bool may_write) {
    switch (request.pdu) {
        case kGetRequest: return get(request);
        case kGetNextRequest: return get_next(request);
        case kGetBulkRequest: return get_bulk(request);
        default: return set(request, may_write);
    }
}

Message Responder::get(const Message& request) {
    Response response(request, options_.max_response);
    for (std::size_t i = 0; i < request.varbinds.size(); ++i) {
        Varbind found = engine_.get(request.varbinds[i].name);
        if (is_unknown_to(request.version, found.value)) return error_response(request, kNoSuchName, i + 1);
        if (!response.add(std::move(found))) return error_response(request, kTooBig, 0);
    }
    return response.take();
}

Message Responder::get_next(const Message& request) {
    Response response(request, options_.max_response);
    for (std::size_t i = 0; i < request.varbinds.size(); ++i) {
        Varbind found = engine_.next(request.varbinds[i].name);
        while (request.version == kVersion1 && found.value.tag == kCounter64) found = engine_.next(found.name);
        if (is_unknown_to(request.version, found.value)) return error_response(request, kNoSuchName, i + 1);
        if (!response.add(std::move(found))) return error_response(request, kTooBig, 0);
    }
    return response.take();
}

Message Responder::get_bulk(const Message& request) {
    Response response(request, options_.max_response);
    const auto count = static_cast<std::ptrdiff_t>(request.varbinds.size());
    const auto non_repeaters = std::clamp<std::ptrdiff_t>(request.error_status, 0, count);
    std::vector<Varbind> row;
    for (const Varbind& varbind : request.varbinds) row.push_back({varbind.name, {}});

    // Once round for the non-repeaters; a response that is full ends everything.
    for (auto at = row.begin(); at != row.begin() + non_repeaters; ++at)
        if (!response.add(engine_.next(at->name))) return response.take();
    row.erase(row.begin(), row.begin() + non_repeaters);
    for (std::int32_t repetition = 0; repetition < request.error_index; ++repetition) {
        for (Varbind& at : row) {
            if (at.value.tag != kEndOfMibView) at = engine_.next(at.name);
            if (!response.add(at)) return response.take();
        }
        const auto has_ended = [](const Varbind& at) { return at.value.tag == kEndOfMibView; };
        if (std::ranges::all_of(row, has_ended)) break;
    }
    return response.take();
}

Message Responder::set(const Message& request, bool may_write) {
    if (!may_write) return error_response(request, kNoAccess, request.varbinds.empty() ? 0 : 1);
    // What is set cannot be taken back, so the response must fit before anything is.
    Response response(request, options_.max_response);
    for (const Varbind& varbind : request.varbinds)
        if (!response.add(varbind)) return error_response(request, kTooBig, 0);
    const SetResult result = engine_.set(request.varbinds);
    return result.status == kNoError ? response.take() : error_response(request, result.status, result.index);
}

}  // namespace agent
