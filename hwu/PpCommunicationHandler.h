#pragma once
// The PP protocol of the EC bus above the transport: builds request frames,
// reads answers into their records, repeats messages, and keeps units alone
// for a while after a reset. The transport, one frame out and its answer
// back, is sendCommand, given by the platform's handler.

#include "frame/EC_LinkedList.h"
#include "hwu/PpFrameCodec.h"
#include "hwu/PpRecords.h"

#include <cstdint>

class PpCommunicationHandler {
public:
    struct ResetEntry {
        std::uint32_t address;
        std::uint32_t port;
        std::uint32_t tick;
        bool operator==(const ResetEntry&) const = default;
    };

    // A unit is left alone this many ticks after its reset.
    static constexpr std::uint32_t kResetGuardTicks = 500;
    // Answers are read into this many bytes; set operations into fewer.
    static constexpr std::uint32_t kAnswerBufferSize = 100;
    static constexpr std::uint32_t kSetAnswerBufferSize = 10;

    PpCommunicationHandler() = default;
    virtual ~PpCommunicationHandler() = default;
    PpCommunicationHandler(const PpCommunicationHandler&) = delete;
    PpCommunicationHandler& operator=(const PpCommunicationHandler&) = delete;

    virtual bool resetDevice(std::uint32_t address, std::uint32_t port);
    virtual bool clearStartFlag(std::uint8_t sequence, std::uint32_t address, std::uint32_t port, bool commOk);
    // `cause` receives the cause byte of a PP reject (may be NIL).
    virtual bool setDeviceData(pp::MessageNo message, std::uint8_t sequence, std::uint32_t address,
                               const PpSetData& data, std::uint32_t port, bool commOk, std::uint8_t* cause);
    virtual bool getDeviceData(pp::MessageNo message, std::uint8_t sequence, std::uint32_t address, PpDeviceData& out,
                               std::uint32_t port, bool commOk);
    virtual bool sendFwd(pp::MessageNo message, std::uint32_t address, std::uint8_t data, std::uint32_t port);
    // One frame to a unit and, when `waitForAnswer`, its answer: at most
    // `bufferLength` bytes into `out`, the answer's whole length in
    // `*outLength`.
    virtual bool sendCommand(std::uint32_t address, std::uint32_t inLength, const std::uint8_t* data,
                             std::uint32_t bufferLength, std::uint32_t* outLength, std::uint8_t* out,
                             bool waitForAnswer, std::uint32_t port) = 0;

    bool getProductData(std::uint32_t address, PpProductIdentity& out, std::uint32_t port, bool commOk);

    // The sequence number shared by every unit of the process: 1 at start,
    // advanced before each use, wrapping as a byte.
    std::uint8_t nextSequenceNumber() { return ++m_sequence; }

private:
    bool canSend(pp::MessageNo message, std::uint32_t address, std::uint32_t port, const char* operation);
    bool setExpectedResponse(pp::MessageNo message, pp::MessageNo& confirm, pp::MessageNo& reject);
    bool sendWithRetry(std::uint32_t address, std::uint32_t port, const std::uint8_t* frame, std::uint32_t length,
                       std::uint8_t* answer, std::uint32_t bufferLength, std::uint32_t& answerLength, bool commOk);

    EC_LinkedList<ResetEntry> m_resetEntries;
    std::uint8_t m_sequence = 1;
};
