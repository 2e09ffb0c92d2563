#include "agent/server.h"

#include <asio.hpp>

#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>

namespace agent {

using asio::ip::udp;

struct Server::Socket {
    Socket(Responder& answering, const udp::endpoint& local) : responder(answering), socket(context, local) {
        socket.native_non_blocking(true);
        // Every datagram comes with the address that it was sent to, which is the one to answer from.
        const int on = 1;
        if (local.address().is_v6())
            ::setsockopt(socket.native_handle(), IPPROTO_IPV6, IPV6_RECVPKTINFO, &on, sizeof on);
        else
            ::setsockopt(socket.native_handle(), IPPROTO_IP, IP_PKTINFO, &on, sizeof on);
    }

    void receive() {
        socket.async_wait(udp::socket::wait_read, [this](std::error_code error) {
            if (error == asio::error::operation_aborted) return;
            // So many at most before signals get their turn.
            for (int i = 0; i < 64 && answer_one(); ++i) {
            }
            receive();
        });
    }

    // False when no datagram waits.
    bool answer_one() {
        sockaddr_storage peer;
        alignas(cmsghdr) unsigned char control[CMSG_SPACE(sizeof(in6_pktinfo))];
        iovec octets{datagram.data(), datagram.size()};
        msghdr message{&peer, sizeof peer, &octets, 1, control, sizeof control, 0};
        const ssize_t size = ::recvmsg(socket.native_handle(), &message, 0);
        if (size < 0) return errno != EAGAIN && errno != EWOULDBLOCK;  // other errors are those of a peer that is gone
        auto response = responder.respond({datagram.data(), static_cast<std::size_t>(size)});
        if (!response) return true;

        octets = {response->data(), response->size()};
        message.msg_flags = 0;
        leave_from_any_interface(message);
        // A response that is lost is asked for again. What was sent to a group has no address to answer from.
        if (::sendmsg(socket.native_handle(), &message, 0) < 0 && message.msg_controllen != 0) {
            message.msg_control = nullptr;
            message.msg_controllen = 0;
            ::sendmsg(socket.native_handle(), &message, 0);
        }
        return true;
    }

    // Keeps the address that was asked but lets routing choose the interface, except for a link's own addresses.
    static void leave_from_any_interface(msghdr& message) {
        cmsghdr* const head = CMSG_FIRSTHDR(&message);
        if (head == nullptr) return;
        if (head->cmsg_level == IPPROTO_IP && head->cmsg_type == IP_PKTINFO) {
            reinterpret_cast<in_pktinfo*>(CMSG_DATA(head))->ipi_ifindex = 0;
        } else if (head->cmsg_level == IPPROTO_IPV6 && head->cmsg_type == IPV6_PKTINFO) {
            auto* const info = reinterpret_cast<in6_pktinfo*>(CMSG_DATA(head));
            if (!IN6_IS_ADDR_LINKLOCAL(&info->ipi6_addr)) info->ipi6_ifindex = 0;
        }
    }

    Responder& responder;
    asio::io_context context{1};
    udp::socket socket;
    asio::signal_set signals{context};
    std::array<std::uint8_t, 65536> datagram;
};

Server::Server(Responder& responder, const std::string& address, std::uint16_t port) {
    try {
        socket_ = std::make_unique<Socket>(responder, udp::endpoint(asio::ip::make_address(address), port));
    } catch (const std::system_error& error) {
        throw std::runtime_error("cannot listen on " + address + " port " + std::to_string(port) + ": " +
                                 error.code().message());
    }
    socket_->receive();
}

Server::~Server() = default;

std::string Server::endpoint() const {
    const udp::endpoint local = socket_->socket.local_endpoint();
    const std::string address = local.address().to_string();
    return (local.address().is_v6() ? '[' + address + ']' : address) + ':' + std::to_string(local.port());
}

std::uint16_t Server::port() const { return socket_->socket.local_endpoint().port(); }

void Server::stop_on_signals() {
    socket_->signals.add(SIGINT);
    socket_->signals.add(SIGTERM);
    socket_->signals.async_wait([this](std::error_code error, int) {
        if (!error) stop();
    });
}

void Server::run() { socket_->context.run(); }

void Server::stop() { socket_->context.stop(); }

}  // namespace agent
