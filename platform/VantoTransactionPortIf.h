#pragma once
// How a management client reaches the transaction server: one request out,
// its answer back. Inside a world this is the kernel's send and receive
// (VantoTransactionOsePort); a program outside the world brings its own.

#include <cstdint>
#include <vector>

class VantoTransactionPortIf {
public:
    virtual ~VantoTransactionPortIf() = default;

    // Sends the request (a whole signal, big-endian, its number first) to the
    // server and waits at most timeoutMs for the server's signal replyNo that
    // echoes the request's client reference (offset 4). Empty when the server
    // cannot be found or did not answer in time.
    virtual std::vector<std::uint8_t> request(const std::vector<std::uint8_t>& signal, std::uint32_t replyNo,
                                              std::uint32_t timeoutMs) = 0;
};
