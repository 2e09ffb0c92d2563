// The agent's UDP socket.
#pragma once

#include "agent/responder.h"

#include <cstdint>
#include <memory>
#include <string>

namespace agent {

class Server {
public:
    // Binds; port 0 takes a free one. Throws std::runtime_error naming the address and what is wrong with it.
    Server(Responder& responder, const std::string& address, std::uint16_t port);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // Where it listens: "127.0.0.1:1161", "[::1]:1161".
    std::string endpoint() const;
    std::uint16_t port() const;

    // Makes SIGINT and SIGTERM stop run().
    void stop_on_signals();
    // Answers requests on the calling thread until stop().
    void run();
    // Ends run(), now or as soon as it is called; may be called from any thread.
    void stop();

private:
    struct Socket;
    std::unique_ptr<Socket> socket_;
};

}  // namespace agent
