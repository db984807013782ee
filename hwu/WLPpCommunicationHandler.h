#pragma once
// The PP transport of the target: each frame goes to the bus server
// "A4ciServer" in an A4CI signal and the answer comes back in another.
// Reaches the kernel only through the core's services and the dispatcher.

#include "hwu/PpCommunicationHandler.h"

#include "ose/Signal.h"
#include "ose/Types.h"

class SignalDispatcherIf;

class WLPpCommunicationHandler : public PpCommunicationHandler {
public:
    static constexpr std::uint32_t kHuntTimeoutMs = 1000;
    static constexpr std::uint32_t kAnswerTimeoutMs = 1000;
    static constexpr std::uint32_t kReaskDelayMs = 60;
    static constexpr unsigned kAttempts = 3;
    static constexpr unsigned kPurgeLimit = 50;

    // Connects at once; without a server this blocks for up to two seconds
    // and the process goes on unconnected.
    explicit WLPpCommunicationHandler(SignalDispatcherIf* dispatcher);

    bool sendCommand(std::uint32_t address, std::uint32_t inLength, const std::uint8_t* data,
                     std::uint32_t bufferLength, std::uint32_t* outLength, std::uint8_t* out, bool waitForAnswer,
                     std::uint32_t port) override;

    bool isConnected() const { return m_connected; }

private:
    bool connect();
    bool forward(std::uint32_t address, std::uint32_t inLength, const std::uint8_t* data, std::uint32_t port);
    bool purgeStaleAnswers();
    // One request and its answer: 1 answered with data, 0 answered empty,
    // -1 failed.
    int exchange(std::uint32_t address, std::uint32_t inLength, const std::uint8_t* data, std::uint32_t bufferLength,
                 std::uint32_t* outLength, std::uint8_t* out, std::uint32_t port);
    int readConfirm(ose::Signal* answer, std::uint32_t bufferLength, std::uint32_t* outLength, std::uint8_t* out);

    ose::PROCESS m_serverPid = 0;
    bool m_connected = false;
    SignalDispatcherIf* m_pDispatcher; // not owned
};
