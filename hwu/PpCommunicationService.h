#pragma once
// Static calls forwarded to the one PpCommunicationHandler set at start
// (not owned). Every unit reaches the bus through here.

#include "hwu/PpCommunicationHandler.h"

class PpCommunicationService {
public:
    static void setHandler(PpCommunicationHandler* handler);
    static PpCommunicationHandler* getHandler();

    static bool resetDevice(std::uint32_t address, std::uint32_t port);
    static bool clearStartFlag(std::uint8_t sequence, std::uint32_t address, std::uint32_t port, bool commOk);
    static bool setDeviceData(pp::MessageNo message, std::uint8_t sequence, std::uint32_t address,
                              const PpSetData& data, std::uint32_t port, bool commOk, std::uint8_t* cause);
    static bool setDeviceData(pp::MessageNo message, std::uint8_t sequence, std::uint32_t address,
                              const PpSetData& data, std::uint32_t port, bool commOk);
    static bool getDeviceData(pp::MessageNo message, std::uint8_t sequence, std::uint32_t address, PpDeviceData& out,
                              std::uint32_t port, bool commOk);
    static bool sendFwd(pp::MessageNo message, std::uint32_t address, std::uint8_t data, std::uint32_t port);
    static bool sendCommand(std::uint32_t address, std::uint32_t inLength, const std::uint8_t* data,
                            std::uint32_t bufferLength, std::uint32_t* outLength, std::uint8_t* out, bool waitForAnswer,
                            std::uint32_t port);
    static bool getProductData(std::uint32_t address, PpProductIdentity& out, std::uint32_t port, bool commOk);
    static std::uint8_t nextSequenceNumber();
};
