#include "agent/server.h"

#include <asio.hpp>

#include <array>
#include <csignal>
#include <stdexcept>

namespace agent {

using asio::ip::udp;

struct Server::Socket {
    Socket(Responder& answering, const udp::endpoint& local) : responder(answering), socket(context, local) {}

    void receive() {
        socket.async_receive_from(asio::buffer(datagram), peer, [this](std::error_code error, std::size_t size) {
            if (error == asio::error::operation_aborted) return;
            // Other errors are those of a peer that is gone.
            if (!error) answer(size);
            receive();
        });
    }

    void answer(std::size_t size) {
        const auto response = responder.respond({datagram.data(), size});
        std::error_code ignored;  // a response that is lost is asked for again
        if (response) socket.send_to(asio::buffer(*response), peer, 0, ignored);
    }

    Responder& responder;
    asio::io_context context{1};
    udp::socket socket;
    asio::signal_set signals{context};
    udp::endpoint peer;
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
